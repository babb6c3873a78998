#include <VelBase/ReferenceCounted.h>
#include <VelSynch/ReferenceCountedImpl.h>

#include <type_traits>

#include "CountedObject.h"
#include "abi/SlotOrder.h"
#include "scripted/ScriptedPlatform.h"

namespace {

using Counted = VelSynch::ReferenceCountedImpl<int>;
using VelBase::ReferenceCounted;

template <class Base, class Derived>
concept VirtualBaseOf = std::is_base_of_v<Base, Derived> && !requires(Base * base) {
    static_cast<Derived*>(base);
};

static_assert(std::is_abstract_v<ReferenceCounted>);
static_assert(std::has_virtual_destructor_v<ReferenceCounted>);
static_assert(sizeof(ReferenceCounted) == sizeof(void*), "no data");
static_assert(VirtualBaseOf<ReferenceCounted, Counted>);
static_assert(std::is_same_v<decltype(&Counted::GetReferenceCount),
                             const int& (Counted::*)() const noexcept>);
static_assert(std::is_same_v<decltype(&Counted::AddRef), void (Counted::*)() const>);
static_assert(std::is_same_v<decltype(&Counted::Release), void (Counted::*)() const>);
static_assert(std::is_same_v<decltype(&Counted::ReferenceCountIsAboutToReachZero),
                             void (Counted::*)() const>);
static_assert(sizeof(int) == 4 && std::is_signed_v<int>);

// A function that is not virtual has an address and no slot.
TEST(ReferenceCountedSlots, AskingForTheCountTakesNone) {
    EXPECT_GT(Abi::SlotOf(&Counted::GetReferenceCount), 64U);
}

// On the stack, where a deletion would be a crash.
class StackObject final : public Counted {
public:
    StackObject() = default;
    StackObject(const StackObject&) = default;
    StackObject& operator=(const StackObject&) = default;
    ~StackObject() override = default;
    void ReferenceCountIsAboutToReachZero() const override { ++hookCalls_; }
    int HookCalls() const { return hookCalls_; }

private:
    mutable int hookCalls_ = 0;
};

class PlainObject final : public Counted {
public:
    explicit PlainObject(bool& ended) : ended_(ended) {}
    ~PlainObject() override { ended_ = true; }

private:
    bool& ended_;
};

// Tells the count in its hook and in its destructor, and may take a reference in the hook.
class HookedObject final : public Counted {
public:
    explicit HookedObject(std::vector<int>& counts, bool staysAlive = false)
        : counts_(counts), staysAlive_(staysAlive) {}
    ~HookedObject() override { counts_.push_back(100 + GetReferenceCount()); }

    void ReferenceCountIsAboutToReachZero() const override {
        counts_.push_back(GetReferenceCount());
        if (staysAlive_) AddRef();
        staysAlive_ = false;
    }

private:
    std::vector<int>& counts_;
    mutable bool staysAlive_;
};

class ReferenceCountedObject : public Scripted::PlatformTest {};

TEST_F(ReferenceCountedObject, NewObjectHasNone) {
    const StackObject object;
    EXPECT_EQ(object.GetReferenceCount(), 0);
}

TEST_F(ReferenceCountedObject, KeptReferenceToTheCountSeesItChange) {
    const StackObject object;
    const int& count = object.GetReferenceCount();
    object.AddRef();
    EXPECT_EQ(count, 1);
    object.AddRef();
    EXPECT_EQ(count, 2);
    object.Release();
    EXPECT_EQ(count, 1);
}

TEST_F(ReferenceCountedObject, ReleaseOfTheSecondOnlyCounts) {
    std::vector<int> counts;
    auto* const object = new HookedObject(counts);
    object->AddRef();
    object->AddRef();
    object->Release();
    EXPECT_EQ(object->GetReferenceCount(), 1);
    EXPECT_EQ(counts, std::vector<int>{});
    object->Release();
}

TEST_F(ReferenceCountedObject, ReleaseOfTheLastCallsTheHookOnceThenCountsThenDeletes) {
    std::vector<int> counts;
    auto* const object = new HookedObject(counts);
    object->AddRef();
    object->Release();
    EXPECT_EQ(counts, (std::vector<int>{1, 100}));
}

TEST_F(ReferenceCountedObject, HookThatTakesAReferenceKeepsTheObject) {
    std::vector<int> counts;
    auto* const object = new HookedObject(counts, true);
    object->AddRef();
    object->Release();
    EXPECT_EQ(counts, std::vector<int>{1});
    EXPECT_EQ(object->GetReferenceCount(), 1);
    object->Release();
    EXPECT_EQ(counts, (std::vector<int>{1, 1, 100}));
}

TEST_F(ReferenceCountedObject, ReleaseWithoutReferencesOnlyCounts) {
    const StackObject object;
    object.Release();
    EXPECT_EQ(object.GetReferenceCount(), -1);
    EXPECT_EQ(object.HookCalls(), 0);
    object.Release();
    EXPECT_EQ(object.GetReferenceCount(), -2);
    EXPECT_EQ(object.HookCalls(), 0);
}

TEST_F(ReferenceCountedObject, DefaultHookDoesNothing) {
    bool ended = false;
    auto* const object = new PlainObject(ended);
    object->AddRef();
    object->ReferenceCountIsAboutToReachZero();
    EXPECT_EQ(object->GetReferenceCount(), 1);
    EXPECT_FALSE(ended);
    object->Release();
    EXPECT_TRUE(ended);
}

TEST_F(ReferenceCountedObject, ObjectIsDeletedThroughTheInterface) {
    bool ended = false;
    const ReferenceCounted* const object = new PlainObject(ended);
    object->AddRef();
    object->Release();
    EXPECT_TRUE(ended);
}

TEST_F(ReferenceCountedObject, CopyStartsItsOwnCountAndAssignmentLeavesIt) {
    StackObject object;
    object.AddRef();
    object.AddRef();
    StackObject copy(object);
    EXPECT_EQ(copy.GetReferenceCount(), 0);
    copy.AddRef();
    copy = object;
    EXPECT_EQ(copy.GetReferenceCount(), 1);
    EXPECT_EQ(object.GetReferenceCount(), 2);
}

}  // namespace
