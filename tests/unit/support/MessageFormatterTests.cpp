#include <VelBase/WideLiteral.h>
#include <VelLog/LogMessage.h>
#include <VelResource/MessageFormatter.h>

#include <limits>
#include <string>
#include <thread>
#include <type_traits>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Text;
using VelBase::operator""_wide;
using VelLog::GetMessageFormatter;
using VelResource::MessageArgument;
using VelResource::MessageFormatter;

static_assert(std::is_same_v<decltype(&GetMessageFormatter), MessageFormatter& (*)() noexcept>);
static_assert(std::is_trivially_destructible_v<MessageFormatter>);

std::u16string Formatted(const MessageFormatter& formatter, const char* format) {
    return Text(formatter.Format(format).Units());
}

class MessageFormatters : public Scripted::PlatformTest {
protected:
    void TearDown() override {
        GetMessageFormatter();
        PlatformTest::TearDown();
    }
};

TEST_F(MessageFormatters, ProcessHasOneWhichComesWithoutArguments) {
    MessageFormatter& first = GetMessageFormatter();
    first.AddInteger(1);
    MessageFormatter& second = GetMessageFormatter();
    EXPECT_EQ(&second, &first);
    EXPECT_EQ(second.ArgumentCount(), 0);
    const MessageFormatter* inThread = nullptr;
    std::thread([&] { inThread = &GetMessageFormatter(); }).join();
    EXPECT_EQ(inThread, &first);
}

TEST_F(MessageFormatters, FeedingReturnsTheFormatterAndAllocatesNothing) {
    const Scripted::Allocations::Mark mark;
    MessageFormatter& formatter = GetMessageFormatter();
    EXPECT_EQ(&formatter.AddWideText("a"_wide), &formatter);
    EXPECT_EQ(&formatter.AddNarrowText("b"), &formatter);
    EXPECT_EQ(&formatter.AddInteger(3), &formatter);
    EXPECT_EQ(mark.Requests(), 0u);
}

TEST_F(MessageFormatters, ArgumentsKeepTheirKindsAndOrder) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddInteger(-3).AddWideText("wide"_wide).AddNarrowText("narrow");
    ASSERT_EQ(formatter.ArgumentCount(), 3);
    EXPECT_EQ(formatter.Argument(0).kind, MessageArgument::Kind::Integer);
    EXPECT_EQ(formatter.Argument(0).integer, -3);
    EXPECT_EQ(formatter.Argument(1).kind, MessageArgument::Kind::WideText);
    EXPECT_EQ(Text(formatter.Argument(1).wide), u"wide");
    EXPECT_EQ(formatter.Argument(2).kind, MessageArgument::Kind::NarrowText);
    EXPECT_STREQ(formatter.Argument(2).narrow, "narrow");
}

TEST_F(MessageFormatters, PlacesAreFilledInTheOrderOfFeeding) {
    const MessageFormatter& formatter = GetMessageFormatter()
                                            .AddInteger(3)
                                            .AddNarrowText("10.1.2.3")
                                            .AddInteger(50123)
                                            .AddWideText("wide"_wide);
    EXPECT_EQ(Formatted(formatter, "Sent %1 bytes, Local address: %2 (%3), %4"),
              u"Sent 3 bytes, Local address: 10.1.2.3 (50123), wide");
}

TEST_F(MessageFormatters, PlacesMayStandInAnyOrderAndMoreThanOnce) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddNarrowText("a").AddNarrowText("b").AddNarrowText("c");
    EXPECT_EQ(Formatted(formatter, "%3%1%2%1"), u"caba");
    EXPECT_EQ(Formatted(formatter, "no place"), u"no place");
    EXPECT_EQ(Formatted(formatter, ""), u"");
}

TEST_F(MessageFormatters, FormatsAreUtf8) {
    EXPECT_EQ(Formatted(GetMessageFormatter(), "\xE2\x82\xAC \xF0\x9F"), u"\u20AC \uFFFD");
}

// The scripted code page is Latin-1.
TEST_F(MessageFormatters, NarrowTextsAreOfTheSystemsCodePage) {
    const MessageFormatter& formatter = GetMessageFormatter().AddNarrowText("h\xF6st \xFF");
    EXPECT_EQ(Formatted(formatter, "<%1>"), u"<h\u00F6st \u00FF>");
}

TEST_F(MessageFormatters, AsciiTextsNeedNoConversion) {
    const MessageFormatter& formatter = GetMessageFormatter().AddNarrowText("host \x7F");
    EXPECT_EQ(Formatted(formatter, "<%1>"), u"<host \x7F>");
    EXPECT_EQ(Scripted::CountOf("WideFromCodePage"), 0);
}

TEST_F(MessageFormatters, WideTextsKeepEveryUnit) {
    const unsigned short text[] = {0x274D, 0xD83D, 'x', 0};
    const auto result = GetMessageFormatter().AddWideText(text).Format("<%1>");
    EXPECT_EQ(Text(result.Units()), (std::u16string{u'<', 0x274D, 0xD83D, u'x', u'>'}));
}

TEST_F(MessageFormatters, IntegersAreWrittenInDecimal) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddInteger(0).AddInteger(65535).AddInteger(
            std::numeric_limits<int>::min());
    EXPECT_EQ(Formatted(formatter, "%1 %2 %3"), u"0 65535 -2147483648");
}

TEST_F(MessageFormatters, WhatIsNoPlaceStandsAsItIs) {
    const MessageFormatter& formatter = GetMessageFormatter().AddNarrowText("A");
    for (const char* format : {"%", "100%", "%%", "%0", "%2", "%9", "%x", "% 1", "%\xC2\xB1"}) {
        EXPECT_EQ(Formatted(formatter, format),
                  Text(VelBase::WideText().AppendUtf8(format).Units()));
    }
    EXPECT_EQ(Formatted(formatter, "%%1"), u"%A");
    EXPECT_EQ(Formatted(formatter, "%1%"), u"A%");
    EXPECT_EQ(Formatted(formatter, "%10"), u"A0");
    EXPECT_EQ(Formatted(formatter, "%1%2%1"), u"A%2A");
}

TEST_F(MessageFormatters, PlacesWithinArgumentsAreNotFilled) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddNarrowText("%2%1%").AddWideText("%1"_wide).AddNarrowText("1");
    EXPECT_EQ(Formatted(formatter, "%1|%2|%%3"), u"%2%1%|%1|%1");
}

TEST_F(MessageFormatters, NullTextsAreEmpty) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddWideText(nullptr).AddNarrowText(nullptr);
    EXPECT_EQ(Formatted(formatter, "<%1|%2>"), u"<|>");
}

TEST_F(MessageFormatters, NineArgumentsHavePlacesAndTheTenthIsDropped) {
    MessageFormatter& formatter = GetMessageFormatter();
    for (int number = 1; number <= 10; ++number)
        formatter.AddInteger(number * 11);
    EXPECT_EQ(formatter.ArgumentCount(), MessageFormatter::MaximumArguments);
    EXPECT_EQ(Formatted(formatter, "%1 %2 %3 %4 %5 %6 %7 %8 %9 %10"),
              u"11 22 33 44 55 66 77 88 99 110");
}

TEST_F(MessageFormatters, ClearForgetsTheArguments) {
    MessageFormatter& formatter = GetMessageFormatter().AddInteger(1);
    formatter.Clear();
    EXPECT_EQ(formatter.ArgumentCount(), 0);
    EXPECT_EQ(Formatted(formatter, "%1"), u"%1");
}

TEST_F(MessageFormatters, ThreadsDoNotSeeEachOthersArguments) {
    MessageFormatter& formatter = GetMessageFormatter().AddNarrowText("main");
    std::u16string empty, fed;
    std::thread([&] {
        empty = Formatted(formatter, "%1");
        formatter.AddNarrowText("other");
        fed = Formatted(formatter, "%1");
        formatter.Clear();
    }).join();
    EXPECT_EQ(empty, u"%1");
    EXPECT_EQ(fed, u"other");
    EXPECT_EQ(Formatted(formatter, "%1 %2"), u"main %2");
}

TEST_F(MessageFormatters, EveryFailingAllocationIsReported) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddNarrowText("narrow").AddWideText("wide"_wide).AddInteger(10061);
    const std::string longFormat = "%1, %2 and %3" + std::string(300, 'x');
    Support::ExpectBadAllocFromEveryAllocation(2, [&] { formatter.Format(longFormat.c_str()); });
}

TEST_F(MessageFormatters, UsualMessagesTakeMemoryOnce) {
    const MessageFormatter& formatter =
        GetMessageFormatter().AddNarrowText("narrow").AddWideText("wide"_wide).AddInteger(10061);
    const Scripted::Allocations::Mark mark;
    EXPECT_EQ(formatter.Format("a text around %1, %2 and %3").Length(), 36U);
    EXPECT_EQ(mark.Requests(), 1U);
}

}  // namespace
