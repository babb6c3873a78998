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

static_assert(!std::is_copy_constructible_v<Holder> && !std::is_move_constructible_v<Holder>);
static_assert(!std::is_copy_assignable_v<Holder> && !std::is_move_assignable_v<Holder>);

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
