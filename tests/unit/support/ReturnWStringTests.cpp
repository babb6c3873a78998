#include <VelBase/ReturnWString.h>
#include <VelBase/WideLiteral.h>

#include <type_traits>
#include <utility>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Text;
using VelBase::operator""_wide;
using VelBase::ReturnWString;

static_assert(std::is_nothrow_default_constructible_v<ReturnWString>);
static_assert(std::is_nothrow_move_constructible_v<ReturnWString>);
static_assert(std::is_nothrow_move_assignable_v<ReturnWString>);
static_assert(std::is_convertible_v<const unsigned short*, ReturnWString>);
static_assert(!std::is_polymorphic_v<ReturnWString>);
static_assert(
    std::is_same_v<decltype(std::declval<const ReturnWString&>().c_str()), const unsigned short*>);

class ReturnWStrings : public Scripted::PlatformTest {};

TEST_F(ReturnWStrings, CopyIsIndependentOfItsSource) {
    unsigned short source[] = {0x20AC, 'b', 0};
    const ReturnWString text(source);
    source[0] = 'X';
    EXPECT_EQ(Text(text.c_str()), u"\u20ACb");
}

TEST_F(ReturnWStrings, UnitsBehindTheFirstZeroAreNotCopied) {
    const unsigned short source[] = {'a', 0, 'b', 0};
    const Scripted::Allocations::Mark mark;
    const ReturnWString text(source);
    EXPECT_EQ(mark.Requests(), 1u);
    EXPECT_EQ(mark.Bytes(), 2 * sizeof(unsigned short));
    EXPECT_EQ(text.c_str()[0], 'a');
    EXPECT_EQ(text.c_str()[1], 0);
}

TEST_F(ReturnWStrings, DefaultNullAndEmptyAreEmptyWithoutAllocation) {
    const Scripted::Allocations::Mark mark;
    const ReturnWString none, null(nullptr), empty(""_wide);
    EXPECT_EQ(*none.c_str(), 0);
    EXPECT_EQ(*null.c_str(), 0);
    EXPECT_EQ(*empty.c_str(), 0);
    EXPECT_EQ(mark.Requests(), 0u);
}

TEST_F(ReturnWStrings, CopiesOwnTheirOwnText) {
    ReturnWString first("first"_wide);
    const ReturnWString copy(first);
    EXPECT_NE(copy.c_str(), first.c_str());
    first = ReturnWString("second"_wide);
    EXPECT_EQ(Text(copy.c_str()), u"first");
    EXPECT_EQ(Text(first.c_str()), u"second");
}

TEST_F(ReturnWStrings, AssignmentReplacesTheTextAndReturnsTheTarget) {
    const ReturnWString source("source"_wide);
    ReturnWString target("target"_wide);
    EXPECT_EQ(&(target = source), &target);
    EXPECT_EQ(Text(target.c_str()), u"source");
    EXPECT_EQ(Text(source.c_str()), u"source");
    EXPECT_NE(target.c_str(), source.c_str());
}

TEST_F(ReturnWStrings, MovedFromIsEmptyAndTheTextStaysInPlace) {
    ReturnWString source("source"_wide);
    const unsigned short* const text = source.c_str();
    ReturnWString constructed(std::move(source));
    EXPECT_EQ(constructed.c_str(), text);
    EXPECT_EQ(*source.c_str(), 0);
    ReturnWString assigned("replaced"_wide);
    assigned = std::move(constructed);
    EXPECT_EQ(assigned.c_str(), text);
    EXPECT_EQ(*constructed.c_str(), 0);
}

TEST_F(ReturnWStrings, SelfAssignmentKeepsTheText) {
    ReturnWString text("text"_wide);
    ReturnWString& itself = text;
    text = itself;
    EXPECT_EQ(Text(text.c_str()), u"text");
    text = std::move(itself);
    EXPECT_EQ(Text(text.c_str()), u"text");
}

TEST_F(ReturnWStrings, FailedAssignmentLeavesTheTarget) {
    const ReturnWString source("source"_wide);
    ReturnWString target("target"_wide);
    {
        const Scripted::Allocations::FailNth failing(1);
        EXPECT_THROW(target = source, std::bad_alloc);
    }
    EXPECT_EQ(Text(target.c_str()), u"target");
}

TEST_F(ReturnWStrings, EveryFailingAllocationIsReported) {
    Support::ExpectBadAllocFromEveryAllocation(2, [] {
        const ReturnWString text("text"_wide);
        const ReturnWString copy(text);
    });
}

TEST(ReturnWStringLiterals, EveryAsciiCharacterBecomesItsUnit) {
    static_assert("A~"_wide[0] == 0x41);
    static_assert("A~"_wide[1] == 0x7E);
    static_assert("A~"_wide[2] == 0);
    static_assert(""_wide[0] == 0);
    EXPECT_EQ(Text("errno = "_wide), u"errno = ");
}

}  // namespace
