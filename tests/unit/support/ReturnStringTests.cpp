#include <VelBase/ReturnString.h>

#include <string>
#include <type_traits>
#include <utility>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using VelBase::ReturnString;

static_assert(std::is_nothrow_default_constructible_v<ReturnString>);
static_assert(std::is_nothrow_move_constructible_v<ReturnString>);
static_assert(std::is_nothrow_move_assignable_v<ReturnString>);
static_assert(std::is_convertible_v<const char*, ReturnString>);
static_assert(!std::is_polymorphic_v<ReturnString>);
static_assert(std::is_same_v<decltype(std::declval<const ReturnString&>().c_str()), const char*>);

class ReturnStrings : public Scripted::PlatformTest {};

TEST_F(ReturnStrings, CopyIsIndependentOfItsSource) {
    char source[] = "text";
    const ReturnString text(source);
    source[0] = 'X';
    EXPECT_STREQ(text.c_str(), "text");
    EXPECT_NE(text.c_str(), source);
}

TEST_F(ReturnStrings, TextStaysWhereItIsWhileTheOwnerLives) {
    const ReturnString text("text");
    const char* const first = text.c_str();
    EXPECT_EQ(text.c_str(), first);
}

TEST_F(ReturnStrings, DefaultNullAndEmptyAreEmptyWithoutAllocation) {
    const Scripted::Allocations::Mark mark;
    const ReturnString none, null(nullptr), empty("");
    EXPECT_STREQ(none.c_str(), "");
    EXPECT_STREQ(null.c_str(), "");
    EXPECT_STREQ(empty.c_str(), "");
    EXPECT_EQ(mark.Requests(), 0u);
}

TEST_F(ReturnStrings, ExactlyTheTextAndItsTerminatorAreAllocated) {
    const Scripted::Allocations::Mark mark;
    const ReturnString text("text");
    EXPECT_EQ(mark.Requests(), 1u);
    EXPECT_EQ(mark.Bytes(), 5u);
}

TEST_F(ReturnStrings, CopiesOwnTheirOwnText) {
    ReturnString first("first");
    const ReturnString copy(first);
    EXPECT_NE(copy.c_str(), first.c_str());
    first = ReturnString("second");
    EXPECT_STREQ(copy.c_str(), "first");
    EXPECT_STREQ(first.c_str(), "second");
}

TEST_F(ReturnStrings, AssignmentReplacesTheTextAndReturnsTheTarget) {
    const ReturnString source("source");
    ReturnString target("target");
    EXPECT_EQ(&(target = source), &target);
    EXPECT_STREQ(target.c_str(), "source");
    EXPECT_STREQ(source.c_str(), "source");
    EXPECT_NE(target.c_str(), source.c_str());
}

TEST_F(ReturnStrings, MovedFromIsEmptyAndTheTextStaysInPlace) {
    ReturnString source("source");
    const char* const text = source.c_str();
    ReturnString constructed(std::move(source));
    EXPECT_EQ(constructed.c_str(), text);
    EXPECT_STREQ(source.c_str(), "");
    ReturnString assigned("replaced");
    assigned = std::move(constructed);
    EXPECT_EQ(assigned.c_str(), text);
    EXPECT_STREQ(constructed.c_str(), "");
}

TEST_F(ReturnStrings, SelfAssignmentKeepsTheText) {
    ReturnString text("text");
    ReturnString& itself = text;
    text = itself;
    EXPECT_STREQ(text.c_str(), "text");
    text = std::move(itself);
    EXPECT_STREQ(text.c_str(), "text");
}

TEST_F(ReturnStrings, FailedAssignmentLeavesTheTarget) {
    const ReturnString source("source");
    ReturnString target("target");
    {
        const Scripted::Allocations::FailNth failing(1);
        EXPECT_THROW(target = source, std::bad_alloc);
    }
    EXPECT_STREQ(target.c_str(), "target");
}

TEST_F(ReturnStrings, EveryFailingAllocationIsReported) {
    Support::ExpectBadAllocFromEveryAllocation(2, [] {
        const ReturnString text("text");
        const ReturnString copy(text);
    });
}

}  // namespace
