#include <Socket/FailureText.h>
#include <Socket/SocketLayerState.h>
#include <VelBase/WideLiteral.h>
#include <VelNet/SocketInitialization.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <optional>
#include <stdexcept>
#include <thread>

#include "ErrorTableExpectations.h"
#include "FailureRecordExpectations.h"
#include "scripted/RecordingServices.h"
#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {
namespace {

using namespace Scripted;
using Scripted::Allocations::FailNth;
using Scripted::Allocations::Mark;
using VelBase::ReturnWString;
using VelBase::operator""_wide;
using VelNet::ComposeFailureText;
using VelNet::Exception;
using VelNet::LogFormat;
using VelNet::ThrowFailure;
using VelNet::ThrowSystemFailure;
using VelNet::TryLogFailure;
using VelNet::operator""_format;

constexpr std::size_t ReservedBytes = 2 * 1020;

class FailureTexts : public PlatformTest {};

std::u16string Composed(unsigned int error) {
    return Text(ComposeFailureText("label()"_wide, "The call failed"_wide, error).c_str());
}

TEST_F(FailureTexts, NameLabelDescriptionNumberAndErrorText) {
    const ReturnWString text = ComposeFailureText("VelNet::SocketAPI::Initialize() - FAIL."_wide,
                                                  "The ::WSAStartup failed"_wide, 10091);
    EXPECT_EQ(Text(text.c_str()),
              u"VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = \u276B "
              u"Network subsystem is unavailable");
}

TEST_F(FailureTexts, CarryTheNumberAsOneUnit) {
    EXPECT_EQ(Composed(10061), u"label() The call failed, errno = \u274D Connection refused");
    EXPECT_EQ(Composed(65), u"label() The call failed, errno = A Unknown error");
    EXPECT_EQ(Composed(43), u"label() The call failed, errno = + Protocol not supported");
    EXPECT_EQ(Composed(10), u"label() The call failed, errno = \n Unknown error");
}

TEST_F(FailureTexts, EndBehindTheLeadInWhenTheNumbersUnitIsZero) {
    EXPECT_EQ(Composed(0), u"label() The call failed, errno = ");
    EXPECT_EQ(Composed(65536), u"label() The call failed, errno = ");
    EXPECT_EQ(Composed(0xFFFF0000U), u"label() The call failed, errno = ");
}

TEST_F(FailureTexts, CutTheNumberButNotWhatIsLookedUp) {
    EXPECT_EQ(Composed(65536 + 10061), u"label() The call failed, errno = \u274D Unknown error");
    EXPECT_EQ(Composed(0xFFFFFFFFU), u"label() The call failed, errno = \uFFFF Unknown error");
    EXPECT_EQ(Composed(0xFFFFFFFEU),
              u"label() The call failed, errno = \uFFFE Operation not permitted");
    EXPECT_EQ(Composed(0x8000D800U), std::u16string(u"label() The call failed, errno = ") +
                                         char16_t{0xD800} + u" Unknown error");
}

TEST_F(FailureTexts, AreRightForEveryNumber) {
    std::vector<int> numbers = ErrorNumbers();
    for (int number = -66000; number < 66000; number += 7)
        numbers.push_back(number);
    for (const ExpectedErrorRow& row : ExpectedErrorTable)
        numbers.push_back(row.key);
    for (const int number : numbers)
        ASSERT_EQ(Composed(static_cast<unsigned int>(number)),
                  ExpectedFailureText("label() The call failed", number))
            << number;
}

TEST_F(FailureTexts, TakeLabelAndDescriptionAsTheyAre) {
    const auto label = Wide(u"%1 {\u00FC} \xD800");
    const auto description = Wide(u"\" %2 \n \U0001F600");
    EXPECT_EQ(Text(ComposeFailureText(label.data(), description.data(), 10004).c_str()),
              std::u16string(u"%1 {\u00FC} \xD800 \" %2 \n \U0001F600, errno = ") +
                  char16_t{10004} + u" Interrupted function call");
    EXPECT_EQ(Text(ComposeFailureText(""_wide, ""_wide, 66).c_str()),
              u" , errno = B Unknown error");
}

TEST_F(FailureTexts, GrowBeyondTheirReservedRoom) {
    const std::u16string label(3000, u'l');
    const std::u16string description(3000, u'd');
    EXPECT_EQ(Text(ComposeFailureText(Wide(label).data(), Wide(description).data(), 10061).c_str()),
              label + u' ' + description + u", errno = \u274D Connection refused");
}

TEST_F(FailureTexts, ReserveRoomForAllTheirPiecesAtOnce) {
    const std::u16string longest(1020 - 40, u'd');
    const auto description = Wide(longest);
    const Mark shortMark;
    ComposeFailureText(""_wide, ""_wide, 10061);
    const std::size_t requests = shortMark.Requests();
    const std::vector<std::size_t> sizes = shortMark.Sizes();
    const Mark longMark;
    ComposeFailureText(""_wide, description.data(), 10061);
    EXPECT_EQ(longMark.Requests(), requests);
    EXPECT_EQ(std::count_if(sizes.begin(), sizes.end(),
                            [](std::size_t size) {
                                return size >= ReservedBytes && size < 2 * ReservedBytes;
                            }),
              1);
}

// How often memory is asked for to compose a text of that many units in all.
std::size_t RequestsForLength(std::size_t length) {
    const std::size_t others = std::u16string_view(u" , errno = \u274D Connection refused").size();
    const auto description = Wide(std::u16string(length - others, u'd'));
    const Mark mark;
    const ReturnWString text = ComposeFailureText(""_wide, description.data(), 10061);
    const std::size_t requests = mark.Requests();
    EXPECT_EQ(Text(text.c_str()).size(), length);
    return requests;
}

TEST_F(FailureTexts, GrowFromTheThousandAndTwentyFirstUnitOn) {
    EXPECT_EQ(RequestsForLength(1020), RequestsForLength(100));
    EXPECT_GT(RequestsForLength(1021), RequestsForLength(1020));
}

TEST_F(FailureTexts, FailWithBadAllocAtEveryAllocationAndLeakNothing) {
    bool happened = true;
    std::size_t number = 0;
    while (happened) {
        ASSERT_LT(++number, 20U);
        const Mark mark;
        const FailNth failing(number);
        bool threw = false;
        try {
            ComposeFailureText("label()"_wide, "The call failed"_wide, 10061);
        } catch (const std::bad_alloc&) {
            threw = true;
        }
        happened = failing.Happened();
        EXPECT_EQ(threw, happened) << number;
        EXPECT_EQ(mark.LiveBlocks(), 0) << number;
    }
    EXPECT_GT(number, 2U);  // the working text and the result at least
}

TEST_F(FailureTexts, RefuseAnImpossibleLengthWithTheText) {
    try {
        const VelBase::WideText text(SIZE_MAX);
        FAIL() << "nothing thrown";
    } catch (const std::length_error& caught) {
        EXPECT_STREQ(caught.what(), "string too long");
    }
}

TEST_F(FailureTexts, AskThePlatformNothing) {
    SetLastError(10061);
    EXPECT_EQ(Composed(10013), u"label() The call failed, errno = \u271D Permission denied");
    EXPECT_EQ(LastError(), 10061);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(FailureTexts, AreComposedOnThreadsAtOnce) {
    std::vector<int> wrong(4, 0);
    std::vector<std::thread> threads;
    for (int& misses : wrong)
        threads.emplace_back([&] {
            for (int error = 10000; error < 10200; ++error)
                misses += Composed(static_cast<unsigned int>(error)) !=
                          ExpectedFailureText("label() The call failed", error);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST_F(FailureTexts, OtherPiecesMayStandBeforeTheNumber) {
    VelBase::WideText text = VelNet::BeginFailureText("label()"_wide, "The ::connect failed"_wide);
    EXPECT_EQ(Text(text.Units()), u"label() The ::connect failed");
    text.Append(" Connection = {10.0.0.1, 80"_wide);
    VelNet::AppendError(text, "}, errno = "_wide, 10061);
    EXPECT_EQ(Text(text.Units()),
              u"label() The ::connect failed Connection = {10.0.0.1, 80}, "
              u"errno = \u274D Connection refused");
}

// With the layer up and every router on.
class FailureTextReports : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        EnableAllRouters();
        initialization_.emplace();
        ClearTranscript();
    }
    void TearDown() override {
        initialization_.reset();
        PlatformTest::TearDown();
    }
    void BringLayerDown() {
        initialization_.reset();
        ClearTranscript();
    }

private:
    std::optional<VelNet::SocketInitialization> initialization_;
};

VelBase::WideText TextOf(const unsigned short* units) {
    VelBase::WideText text;
    text.Append(units);
    return text;
}

TEST_F(FailureTextReports, AreLoggedThenThrownWithTextAndCode) {
    std::vector<std::u16string> loggedWhenCaught;
    try {
        ThrowFailure(TextOf("what went wrong"_wide), VelNet::SOCKET_ERR_NO_DATA);
    } catch (const Exception& caught) {
        loggedWhenCaught = LoggedTexts("Error");
        EXPECT_EQ(Text(caught.GetMessage()), u"what went wrong");
        EXPECT_EQ(caught.GetErrorCode(), 11004);
        EXPECT_EQ(Text(static_cast<const VelBase::Message&>(caught).GetMessage()), u"");
    }
    EXPECT_EQ(loggedWhenCaught, std::vector<std::u16string>{u"what went wrong"});
    ExpectOneRecord("%1", u"what went wrong");
    EXPECT_EQ(Transcript(), Lines{"LogMessage(Error, \"what went wrong\")"});
}

TEST_F(FailureTextReports, AreLoggedWithTheFormatAskedFor) {
    EXPECT_THROW(
        ThrowSystemFailure("label()"_wide, "It failed"_wide, 0, nullptr, "Cannot do it: %1"_format),
        Exception);
    const std::u16string text = u"label() It failed, errno = ";
    ExpectOneRecord("Cannot do it: %1", text);
    EXPECT_EQ(LoggedTexts("Error"), std::vector<std::u16string>{u"Cannot do it: " + text});
}

TEST_F(FailureTextReports, AreLoggedWholeAndThrownCut) {
    const std::u16string text(4000, u't');
    try {
        ThrowFailure(TextOf(Wide(text).data()), VelNet::SOCKET_ERR_INTR);
    } catch (const Exception& caught) {
        EXPECT_EQ(Text(caught.GetMessage()), std::u16string(2999, u't'));
    }
    EXPECT_EQ(LoggedTexts("Error"), std::vector<std::u16string>{text});
}

TEST_F(FailureTextReports, EndAtTheFirstZeroUnit) {
    VelBase::WideText text = TextOf("before"_wide);
    text.Append(static_cast<unsigned short>(0)).Append("behind"_wide);
    const Exception failure = VelNet::LoggedFailure(text, VelNet::SOCKET_ERR_INTR);
    EXPECT_EQ(Text(failure.GetMessage()), u"before");
    ExpectOneRecord("%1", u"before");
}

TEST_F(FailureTextReports, TakeMemoryOnceWhereNothingIsLogged) {
    BringLayerDown();
    const Mark mark;
    const Exception failure = VelNet::LoggedSystemFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(mark.Requests(), 1U);
    EXPECT_EQ(failure.GetErrorCode(), 10061);
}

TEST_F(FailureTextReports, TextThatLooksLikeAFormatIsNotOne) {
    EXPECT_THROW(ThrowFailure(TextOf("%1 %2 %s"_wide), VelNet::SOCKET_ERR_INTR), Exception);
    EXPECT_EQ(LoggedTexts("Error"), std::vector<std::u16string>{u"%1 %2 %s"});
}

TEST_F(FailureTextReports, OfTheSystemCarryTextAndCodeOfEveryNumber) {
    for (const int number : ErrorNumbers()) {
        const std::size_t logged = LoggedTexts("Error").size();
        const std::u16string expected = ExpectedFailureText("label() It failed", number);
        try {
            ThrowSystemFailure("label()"_wide, "It failed"_wide, number);
        } catch (const Exception& caught) {
            EXPECT_EQ(Text(caught.GetMessage()), expected) << number;
            EXPECT_EQ(caught.GetErrorCode(), ExpectedRow(number).code) << number;
        }
        ASSERT_EQ(LoggedTexts("Error").size(), logged + 1) << number;
        EXPECT_EQ(LoggedTexts("Error").back(), expected) << number;
        EXPECT_EQ(LoggedMessages().back().format, "%1") << number;
    }
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

TEST_F(FailureTextReports, AreThrownWithoutARecordWhenTheRouterIsOff) {
    SetRouterFlag("Error", 0);
    EXPECT_THROW(ThrowSystemFailure("label()"_wide, "It failed"_wide, 10061), Exception);
    EXPECT_THROW(ThrowFailure(TextOf("text"_wide), VelNet::SOCKET_ERR_INTR), Exception);
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(FailureTextReports, AreThrownWithoutARecordWhenTheLayerIsDown) {
    BringLayerDown();
    EXPECT_THROW(ThrowSystemFailure("label()"_wide, "It failed"_wide, 10061), Exception);
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(FailureTextReports, AreLoggedByTheErrorRouterAlone) {
    for (const char* const category : {"Connection Trace", "Packet Trace", "Verbose Packet Trace"})
        SetRouterFlag(category, 0);
    EXPECT_THROW(ThrowFailure(TextOf("text"_wide), VelNet::SOCKET_ERR_INTR), Exception);
    ExpectOneRecord("%1", u"text");
}

TEST_F(FailureTextReports, AnyFlagButZeroSwitchesTheRecordOn) {
    SetRouterFlag("Error", 0x80);
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    SetRouterFlag("Error", 0xFF);
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(LoggedTexts("Error").size(), 2U);
}

TEST_F(FailureTextReports, WhatTheLogThrowsLeavesAndNothingLeaks) {
    On::LogMessage().Throws(std::runtime_error("disk full"));
    EXPECT_THROW(ThrowSystemFailure("label()"_wide, "It failed"_wide, 10061), std::runtime_error);
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedAreNotThrown) {
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    ExpectOneRecord("%1", u"label() It failed, errno = \u274D Connection refused");
    static_assert(noexcept(TryLogFailure(nullptr, nullptr, 0)));
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedTakeTheFormatAskedFor) {
    TryLogFailure("label()"_wide, "It failed"_wide, 65, nullptr, "Not done: %1"_format);
    ExpectOneRecord("Not done: %1", u"label() It failed, errno = A Unknown error");
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedCarryEveryNumber) {
    std::vector<std::u16string> expected;
    for (const int number : ErrorNumbers()) {
        TryLogFailure("label()"_wide, "It failed"_wide, number);
        expected.push_back(ExpectedFailureText("label() It failed", number));
    }
    EXPECT_EQ(LoggedTexts("Error"), expected);
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedLoseWhatTheLogThrows) {
    On::LogMessage().Throws(7).Throws(std::runtime_error("disk full"));
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(CountOf("LogMessage"), 2);
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedAreLostWhenMemoryIs) {
    bool happened = true;
    std::size_t number = 0;
    while (happened) {
        ASSERT_LT(++number, 30U);
        const int logged = CountOf("LogMessage");
        {
            const FailNth failing(number);
            TryLogFailure("label()"_wide, "It failed"_wide, 10061);
            happened = failing.Happened();
        }
        EXPECT_EQ(CountOf("LogMessage"), happened ? logged : logged + 1) << number;
    }
    EXPECT_GT(number, 1U);
}

TEST_F(FailureTextReports, ThatAreOnlyLoggedCostNothingWhenTheRouterIsOff) {
    SetRouterFlag("Error", 0);
    const Mark mark;
    TryLogFailure("label()"_wide, "It failed"_wide, 10061);
    EXPECT_EQ(mark.Requests(), 0U);
}

}  // namespace
}  // namespace FoundationTests
