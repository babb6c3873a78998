#include <VelBase/InterfaceHolder.h>

#include <optional>
#include <type_traits>

#include "CountedObject.h"
#include "scripted/ScriptedPlatform.h"

namespace {

using Support::CountedObject;
using Events = CountedObject::Events;
using Holder = VelBase::InterfaceHolder<CountedObject>;
using Owner = VelBase::ReturnPtrI<CountedObject>;

static_assert(std::is_copy_assignable_v<Holder> && !std::is_default_constructible_v<Holder>);

class InterfaceHolders : public Scripted::PlatformTest {};

TEST_F(InterfaceHolders, HolderTakesAndReleasesOneReference) {
    Events events;
    {
        const Holder holder(new CountedObject(events));
        EXPECT_EQ(holder->GetReferenceCount(), 1);
    }
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

TEST_F(InterfaceHolders, ReferenceHandedOutIsTakenOver) {
    Events events;
    Owner handedOut(new CountedObject(events));
    {
        const Holder holder(std::move(handedOut));
        EXPECT_FALSE(handedOut);
        EXPECT_EQ((*holder).GetReferenceCount(), 1);
        EXPECT_EQ(events, Events{"AddRef"});
    }
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

TEST_F(InterfaceHolders, HolderOfNothingCallsNothing) {
    Holder null(static_cast<CountedObject*>(nullptr));
    EXPECT_EQ(null.Get(), nullptr);
    null.Reset();
    const Holder taken{Owner()};
    EXPECT_EQ(taken.Get(), nullptr);
}

TEST_F(InterfaceHolders, CopyHoldsAReferenceOfItsOwn) {
    Events events;
    {
        Holder holder(new CountedObject(events));
        const Holder copy(holder);
        EXPECT_EQ(copy.Get(), holder.Get());
        EXPECT_EQ(copy->GetReferenceCount(), 2);
        holder.Reset();
        EXPECT_EQ(copy->GetReferenceCount(), 1);
    }
    EXPECT_EQ(events, (Events{"AddRef", "AddRef", "Release", "Release", "end at 0"}));
}

TEST_F(InterfaceHolders, CopyOfNothingHoldsNothing) {
    const Holder null(static_cast<CountedObject*>(nullptr));
    const Holder copy(null);
    EXPECT_EQ(copy.Get(), nullptr);
}

TEST_F(InterfaceHolders, AssignedHolderReleasesWhatItHeld) {
    Events firstEvents;
    Events secondEvents;
    Holder holder(new CountedObject(firstEvents));
    const Holder other(new CountedObject(secondEvents));
    holder = other;
    EXPECT_EQ(holder.Get(), other.Get());
    EXPECT_EQ(firstEvents, (Events{"AddRef", "Release", "end at 0"}));
    EXPECT_EQ(secondEvents, (Events{"AddRef", "AddRef"}));
}

TEST_F(InterfaceHolders, HolderAssignedToItselfKeepsItsObject) {
    Events events;
    Holder holder(new CountedObject(events));
    const Holder& same = holder;
    holder = same;
    EXPECT_EQ(holder->GetReferenceCount(), 1);
    EXPECT_EQ(events, (Events{"AddRef", "AddRef", "Release"}));
}

TEST_F(InterfaceHolders, HolderIsEmptyWhenResetEndsItsObject) {
    Events events;
    const CountedObject* seen = nullptr;
    Holder* looked = nullptr;
    Holder holder(new CountedObject(events, [&] { seen = looked->Get(); }));
    looked = &holder;
    seen = holder.Get();
    holder.Reset();
    EXPECT_EQ(seen, nullptr);
    holder.Reset();
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

TEST_F(InterfaceHolders, HolderIsEmptyWhenItsEndEndsItsObject) {
    Events events;
    const CountedObject* seen = nullptr;
    const Holder* looked = nullptr;
    std::optional<Holder> holder;
    holder.emplace(new CountedObject(events, [&] { seen = looked->Get(); }));
    looked = &*holder;
    seen = holder->Get();
    holder.reset();
    EXPECT_EQ(seen, nullptr);
    EXPECT_EQ(events, (Events{"AddRef", "Release", "end at 0"}));
}

}  // namespace
