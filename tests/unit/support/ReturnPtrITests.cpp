#include <VelBase/ReturnPtrI.h>

#include <optional>
#include <type_traits>

#include "CountedObject.h"
#include "scripted/ScriptedPlatform.h"

namespace {

using Support::CountedObject;
using Events = CountedObject::Events;
using Owner = VelBase::ReturnPtrI<CountedObject>;

static_assert(!std::is_copy_constructible_v<Owner>);
static_assert(!std::is_copy_assignable_v<Owner>);
static_assert(std::is_move_constructible_v<Owner>);
static_assert(std::is_move_assignable_v<Owner>);
static_assert(std::is_convertible_v<CountedObject*, Owner>);
static_assert(!std::is_convertible_v<Owner, bool>);
static_assert(std::is_constructible_v<bool, Owner>);
static_assert(sizeof(Owner) == sizeof(void*));

class ReturnPtrIOwner : public Scripted::PlatformTest {};

TEST_F(ReturnPtrIOwner, OwnerTakesExactlyOneReference) {
    Events events;
    {
        const Owner owner(new CountedObject(events));
        EXPECT_EQ(owner->GetReferenceCount(), 1);
        EXPECT_EQ(events, Events{"AddRef"});
    }
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

TEST_F(ReturnPtrIOwner, OwnerOfNothingCallsNothing) {
    const Owner none;
    const Owner null(nullptr);
    EXPECT_FALSE(none);
    EXPECT_FALSE(null);
    EXPECT_EQ(none.Get(), nullptr);
    EXPECT_EQ(null.Get(), nullptr);
}

TEST_F(ReturnPtrIOwner, TakingEmptiesTheOwnerAndKeepsTheReference) {
    Events events;
    CountedObject* taken = nullptr;
    {
        Owner owner(new CountedObject(events));
        CountedObject* const object = owner.Get();
        taken = owner.Take();
        EXPECT_EQ(taken, object);
        EXPECT_FALSE(owner);
        EXPECT_EQ(owner.Take(), nullptr);
    }
    EXPECT_EQ(events, Events{"AddRef"});
    EXPECT_EQ(taken->GetReferenceCount(), 1);
    taken->Release();
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

TEST_F(ReturnPtrIOwner, OwnerIsEmptyWhenItsObjectEnds) {
    Events events;
    std::optional<Owner> owner;
    const CountedObject* seen = nullptr;
    Owner* const looked = &owner.emplace();
    *owner = new CountedObject(events, [&] { seen = looked->Get(); });
    seen = owner->Get();
    ASSERT_NE(seen, nullptr);
    owner.reset();
    EXPECT_EQ(seen, nullptr);
}

TEST_F(ReturnPtrIOwner, MoveHandsTheReferenceOver) {
    Events events;
    Owner first(new CountedObject(events));
    CountedObject* const object = first.Get();
    const Owner second(std::move(first));
    EXPECT_FALSE(first);
    EXPECT_EQ(second.Get(), object);
    EXPECT_EQ(events, Events{"AddRef"});
}

TEST_F(ReturnPtrIOwner, MoveAssignmentIsEmptyWhenItsOldObjectEnds) {
    Events oldEvents, newEvents;
    Owner target;
    const CountedObject* seen = nullptr;
    target = new CountedObject(oldEvents, [&] { seen = target.Get(); });
    seen = target.Get();
    Owner source(new CountedObject(newEvents));
    CountedObject* const object = source.Get();
    EXPECT_EQ(&(target = std::move(source)), &target);
    EXPECT_EQ(seen, nullptr);
    EXPECT_EQ(oldEvents, (Events{"AddRef", "Release", "end at 0"}));
    EXPECT_EQ(newEvents, Events{"AddRef"});
    EXPECT_EQ(target.Get(), object);
    EXPECT_FALSE(source);
}

TEST_F(ReturnPtrIOwner, SelfMoveAssignmentKeepsTheObject) {
    Events events;
    Owner owner(new CountedObject(events));
    Owner& itself = owner;
    owner = std::move(itself);
    EXPECT_TRUE(owner);
    EXPECT_EQ(events, Events{"AddRef"});
}

TEST_F(ReturnPtrIOwner, SecondOwnerOfOneObjectSharesIt) {
    Events events;
    const Owner first(new CountedObject(events));
    {
        const Owner second(first.Get());
        EXPECT_EQ(first->GetReferenceCount(), 2);
        EXPECT_EQ(&*second, first.Get());
    }
    EXPECT_EQ(events, (Events{"AddRef", "AddRef", "Release"}));
    EXPECT_EQ(first->GetReferenceCount(), 1);
}

}  // namespace
