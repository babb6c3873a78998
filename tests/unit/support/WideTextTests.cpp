#include <VelBase/LengthLimit.h>
#include <VelBase/WideLiteral.h>
#include <VelBase/WideText.h>

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Text;
using VelBase::operator""_wide;
using VelBase::WideText;

constexpr std::size_t Endless = std::numeric_limits<std::size_t>::max();

template <class Operation>
std::string LengthErrorOf(Operation operation) {
    try {
        operation();
    } catch (const std::length_error& error) {
        return error.what();
    }
    return "(no std::length_error)";
}

class WideTexts : public Scripted::PlatformTest {};

TEST_F(WideTexts, NewTextIsEmptyAndTerminated) {
    const WideText text;
    EXPECT_EQ(text.Length(), 0u);
    EXPECT_EQ(text.Units()[0], 0);
}

TEST_F(WideTexts, PartsOfEveryKindStandInTheirOrder) {
    const unsigned short units[] = {'c', 'd', 'X'};
    WideText text;
    WideText& result = text.Append("ab"_wide)
                           .Append(units, 2)
                           .Append(static_cast<unsigned short>(0x274D))
                           .Append(VelBase::ReturnWString("e"_wide))
                           .Append(std::vector<unsigned short>{'f', 'g'})
                           .AppendUtf8("\xE2\x82\xAC")
                           .AppendMultiByte("h")
                           .AppendDecimal(-71);
    EXPECT_EQ(&result, &text);
    EXPECT_EQ(Text(text.Units()), u"abcd\u274Defg\u20ACh-71");
    EXPECT_EQ(text.Length(), 13u);
}

TEST_F(WideTexts, NothingIsAppendedForNullOrEmpty) {
    WideText text;
    text.Append("a"_wide);
    text.Append(static_cast<const unsigned short*>(nullptr)).Append(""_wide).Append(nullptr, 0);
    text.Append(std::vector<unsigned short>{}).AppendUtf8("").AppendUtf8({});
    EXPECT_EQ(Text(text.Units()), u"a");
    EXPECT_EQ(text.Length(), 1u);
}

TEST_F(WideTexts, ZeroUnitIsKeptButEndsTheTextForItsReader) {
    WideText text;
    text.Append("before"_wide).Append(static_cast<unsigned short>(0)).Append("behind"_wide);
    EXPECT_EQ(text.Length(), 13u);
    EXPECT_EQ(text.Units()[7], 'b');
    EXPECT_EQ(text.Units()[13], 0);
    EXPECT_EQ(Text(text.ToReturnWString().c_str()), u"before");
}

static_assert(!std::is_copy_constructible_v<WideText> && !std::is_copy_assignable_v<WideText>);

TEST_F(WideTexts, MovedTextGrowsOn) {
    WideText first;
    first.Append("a"_wide);
    WideText second = std::move(first);
    second.Append("b"_wide);
    EXPECT_EQ(Text(second.Units()), u"ab");
    first = std::move(second);
    first.Append("c"_wide);
    EXPECT_EQ(Text(first.Units()), u"abc");
    EXPECT_EQ(first.Length(), 3u);
}

TEST_F(WideTexts, ReservedRoomNeedsNoFurtherAllocation) {
    WideText text(1020);
    const Scripted::Allocations::Mark mark;
    for (int unit = 0; unit < 1018; ++unit)
        text.Append(static_cast<unsigned short>('a'));
    text.AppendUtf8("bc");
    EXPECT_EQ(mark.Requests(), 0u);
    EXPECT_EQ(text.Length(), 1020u);
}

TEST_F(WideTexts, GrowthAllocatesSeldom) {
    WideText text;
    const Scripted::Allocations::Mark mark;
    for (int unit = 0; unit < 100'000; ++unit)
        text.Append(static_cast<unsigned short>('a'));
    EXPECT_LT(mark.Requests(), 20u);
}

TEST_F(WideTexts, GrowingPastEveryLimitIsRefused) {
    WideText text;
    text.Append("a"_wide);
    EXPECT_EQ(LengthErrorOf([&] { text.Append("b"_wide, Endless / 2); }), "string too long");
    EXPECT_EQ(LengthErrorOf([&] { text.AppendUtf8({"b", Endless / 2}); }), "string too long");
    EXPECT_EQ(LengthErrorOf([] { WideText{Endless}; }), "string too long");
    EXPECT_EQ(Text(text.Units()), u"a");
}

TEST_F(WideTexts, TerminatorCountsTowardsTheLimit) {
    const std::size_t limit = std::vector<unsigned short>().max_size();
    WideText text;
    EXPECT_EQ(LengthErrorOf([&] { WideText{limit}; }), "string too long");
    EXPECT_EQ(LengthErrorOf([&] { text.Append("b"_wide, limit); }), "string too long");
    EXPECT_EQ(LengthErrorOf([&] { text.AppendUtf8({"b", limit}); }), "string too long");
    EXPECT_EQ(Text(text.Units()), u"");
}

TEST_F(WideTexts, LongestPossibleTextLacksMemoryOnly) {
    static const std::size_t longest = std::vector<unsigned short>().max_size() - 1;
    // Some compilers refuse it themselves and ask for no memory. An error's text would ask for
    // little.
    const auto lacksMemory = [](auto operation) {
        const Scripted::Allocations::Mark mark;
        const Scripted::Allocations::FailNth failing(1);
        try {
            operation();
        } catch (const std::bad_alloc&) {
            const std::vector<std::size_t> sizes = mark.Sizes();
            return std::all_of(sizes.begin(), sizes.end(),
                               [](std::size_t size) { return size > longest; });
        }
        return false;
    };
    WideText text;
    EXPECT_TRUE(lacksMemory([&] { WideText{longest}; }));
    EXPECT_TRUE(lacksMemory([&] { text.Append("b"_wide, longest); }));
    EXPECT_TRUE(lacksMemory([&] { text.AppendUtf8({"b", longest}); }));
    EXPECT_EQ(Text(text.Units()), u"");
}

TEST_F(WideTexts, FailedAllocationLeavesTheText) {
    WideText text;
    text.Append("kept"_wide);
    const std::u16string long16(100, u'x');
    const auto longWide = Scripted::Wide(long16);
    for (int form = 0; form < 2; ++form) {
        const Scripted::Allocations::FailNth failing(1);
        EXPECT_THROW(form == 0 ? text.Append(longWide.data())
                               : text.AppendUtf8(std::string_view(
                                     "a narrow text that is longer than what is left of the room")),
                     std::bad_alloc);
    }
    EXPECT_EQ(Text(text.Units()), u"kept");
}

TEST_F(WideTexts, EveryFailingAllocationIsReported) {
    Support::ExpectBadAllocFromEveryAllocation(3, [] {
        WideText text;
        text.Append("a wide part"_wide).AppendUtf8("a narrow part");
        text.ToReturnWString();
    });
}

TEST(WideTextLimits, RoomUpToTheMaximumIsGranted) {
    EXPECT_NO_THROW(VelBase::RequireRoom(0, 0, 0, VelBase::VectorTooLong));
    EXPECT_NO_THROW(VelBase::RequireRoom(0, 10, 10, VelBase::VectorTooLong));
    EXPECT_NO_THROW(VelBase::RequireRoom(9, 1, 10, VelBase::VectorTooLong));
    EXPECT_NO_THROW(VelBase::RequireRoom(10, 0, 10, VelBase::VectorTooLong));
    EXPECT_NO_THROW(VelBase::RequireRoom(0, Endless, Endless, VelBase::VectorTooLong));
}

TEST(WideTextLimits, OneMoreIsRefusedWithTheText) {
    using VelBase::RequireRoom;
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(10, 1, 10, VelBase::VectorTooLong); }),
              "vector<T> too long");
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(0, 11, 10, VelBase::StringTooLong); }),
              "string too long");
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(0, 1, 0, VelBase::StringTooLong); }),
              "string too long");
}

TEST(WideTextLimits, SumsThatOverflowAreRefused) {
    using VelBase::RequireRoom;
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(Endless, 1, Endless, VelBase::StringTooLong); }),
              "string too long");
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(1, Endless, Endless, VelBase::StringTooLong); }),
              "string too long");
    EXPECT_EQ(LengthErrorOf([] { RequireRoom(Endless, Endless, 10, VelBase::VectorTooLong); }),
              "vector<T> too long");
}

}  // namespace
