#include <VelLog/LogControl.h>
#include <VelLog/Router.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include "LogTest.h"
#include "support/OutOfMemory.h"

namespace {

using VelBase::ReturnPtrI;
using VelLog::Router;
using VelLog::SetRouterEnabled;

static_assert(std::is_same_v<decltype(&VelLog::CreateRouter),
                             ReturnPtrI<Router> (*)(const char*, const char*,
                                                    VelSynch::EnumOrrinLockStackCategory)>);
static_assert(std::is_base_of_v<VelSynch::ReferenceCountedImpl<int>, Router>);
static_assert(VelSynch::LOCK_STACK_CATEGORY_NETWORK == -3);
static_assert(sizeof(std::atomic<unsigned char>) == 1);

ReturnPtrI<Router> Create(const char* name, const char* category) {
    return VelLog::CreateRouter(name, category, VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

class Routers : public Scripted::PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        VelLog::SetSink(&sink_);
    }

    void TearDown() override {
        VelLog::SetSink(nullptr);
        SetRouterEnabled("Network", "Error", false);
        SetRouterEnabled("Network", "Packet Trace", false);
        PlatformTest::TearDown();
    }

private:
    Support::RecordingSink sink_;
};

TEST_F(Routers, NewRouterIsOffAndHasOneReference) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    EXPECT_FALSE(router->IsEnabled());
    EXPECT_STREQ(router->Name(), "Network");
    EXPECT_STREQ(router->Category(), "Error");
    EXPECT_EQ(router->GetReferenceCount(), 1);
}

TEST_F(Routers, KeepTheirBitOfAWordEqualToTheFlag) {
    std::atomic<unsigned int> word = 0b1000;
    const ReturnPtrI<Router> first = Create("Network", "Error");
    const ReturnPtrI<Router> second = Create("Network", "Error");
    first->SetFlag(1);
    first->MirrorIn(word, 0b0001);
    second->MirrorIn(word, 0b0010);
    EXPECT_EQ(word, 0b1001U);
    second->SetFlag(0x80);
    EXPECT_EQ(word, 0b1011U);
    first->SetFlag(0);
    EXPECT_EQ(word, 0b1010U);
    SetRouterEnabled("Network", "Error", true);
    EXPECT_EQ(word, 0b1011U);
}

TEST_F(Routers, KeepTheirBitRightWhileThreadsSwitch) {
    constexpr int Rounds = 20'000;
    std::atomic<unsigned int> word = 0;
    const ReturnPtrI<Router> router = Create("Network", "Error");
    router->MirrorIn(word, 1);
    const auto switchOften = [&router](unsigned char first) {
        for (int round = 0; round < Rounds; ++round)
            router->SetFlag(static_cast<unsigned char>((round + first) % 2));
    };
    std::thread other(switchOften, static_cast<unsigned char>(1));
    switchOften(0);
    other.join();
    EXPECT_EQ(word != 0, router->IsEnabled());
}

TEST_F(Routers, EveryFlagButZeroMeansEnabled) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    for (const int flag : {1, 2, 0x80, 0xFF}) {
        router->SetFlag(static_cast<unsigned char>(flag));
        EXPECT_TRUE(router->IsEnabled()) << flag;
    }
    router->SetFlag(0);
    EXPECT_FALSE(router->IsEnabled());
}

TEST_F(Routers, LiveRoutersAreSwitched) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    EXPECT_TRUE(SetRouterEnabled("Network", "Error", true));
    EXPECT_TRUE(router->IsEnabled());
    EXPECT_TRUE(SetRouterEnabled("Network", "Error", false));
    EXPECT_FALSE(router->IsEnabled());
}

TEST_F(Routers, LaterRoutersAreSwitchedAsWasLastAskedFor) {
    SetRouterEnabled("Network", "Error", true);
    EXPECT_TRUE(Create("Network", "Error")->IsEnabled());
    EXPECT_TRUE(Create("Network", "Error")->IsEnabled());
    SetRouterEnabled("Network", "Error", false);
    EXPECT_FALSE(Create("Network", "Error")->IsEnabled());
}

TEST_F(Routers, NoneIsEnabledWithoutASink) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    const ReturnPtrI<Router> other = Create("Network", "Packet Trace");
    SetRouterEnabled("Network", "Error", true);
    VelLog::LogSink* const sink = VelLog::SetSink(nullptr);
    EXPECT_FALSE(router->IsEnabled());
    EXPECT_FALSE(Create("Network", "Error")->IsEnabled());
    EXPECT_TRUE(SetRouterEnabled("Network", "Error", true));
    EXPECT_FALSE(router->IsEnabled());
    VelLog::SetSink(sink);
    EXPECT_TRUE(router->IsEnabled());
    EXPECT_FALSE(other->IsEnabled());
    EXPECT_TRUE(Create("Network", "Error")->IsEnabled());
}

TEST_F(Routers, WhatIsSwitchedWithoutASinkHoldsOnceThereIsOne) {
    const ReturnPtrI<Router> error = Create("Network", "Error");
    const ReturnPtrI<Router> packets = Create("Network", "Packet Trace");
    SetRouterEnabled("Network", "Error", true);
    VelLog::LogSink* const sink = VelLog::SetSink(nullptr);
    SetRouterEnabled("Network", "Error", false);
    SetRouterEnabled("Network", "Packet Trace", true);
    VelLog::SetSink(sink);
    EXPECT_FALSE(error->IsEnabled());
    EXPECT_TRUE(packets->IsEnabled());
}

TEST_F(Routers, AreEnabledWhicheverSinkIsSet) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    SetRouterEnabled("Network", "Error", true);
    Support::RecordingSink another;
    VelLog::LogSink* const sink = VelLog::SetSink(&another);
    EXPECT_TRUE(router->IsEnabled());
    VelLog::SetSink(sink);
    EXPECT_TRUE(router->IsEnabled());
}

// Takes itself away.
class LeavingSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override { VelLog::SetSink(nullptr); }
};

TEST_F(Routers, NoneIsEnabledOnceASinkHasTakenItselfAway) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    SetRouterEnabled("Network", "Error", true);
    LeavingSink leaving;
    VelLog::SetSink(&leaving);
    Support::Log(*router, "text");
    EXPECT_FALSE(router->IsEnabled());
}

TEST_F(Routers, OnlyTheSameNameAndCategoryAreSwitched) {
    const ReturnPtrI<Router> error = Create("Network", "Error");
    const ReturnPtrI<Router> packets = Create("Network", "Packet Trace");
    const ReturnPtrI<Router> other = Create("Storage", "Error");
    SetRouterEnabled("Network", "Error", true);
    EXPECT_TRUE(error->IsEnabled());
    EXPECT_FALSE(packets->IsEnabled());
    EXPECT_FALSE(other->IsEnabled());
    for (const char* const name : {"network", "Networ", "Networks", "Archive", ""})
        EXPECT_FALSE(Create(name, "Error")->IsEnabled()) << name;
    for (const char* const category : {"error", "Erro", "Errors", "Debug", ""})
        EXPECT_FALSE(Create("Network", category)->IsEnabled()) << category;
}

TEST_F(Routers, AllRoutersOfOneNameAreSwitched) {
    const ReturnPtrI<Router> first = Create("Network", "Error");
    const ReturnPtrI<Router> second = Create("Network", "Error");
    SetRouterEnabled("Network", "Error", true);
    EXPECT_TRUE(first->IsEnabled());
    EXPECT_TRUE(second->IsEnabled());
}

TEST_F(Routers, RemainingRoutersAreSwitchedWhateverRouterEnded) {
    for (int ended = 0; ended < 3; ++ended) {
        ReturnPtrI<Router> routers[] = {Create("Network", "Error"), Create("Network", "Error"),
                                        Create("Network", "Error")};
        routers[ended] = ReturnPtrI<Router>();
        SetRouterEnabled("Network", "Error", true);
        for (const ReturnPtrI<Router>& router : routers)
            EXPECT_TRUE(!router || router->IsEnabled());
        SetRouterEnabled("Network", "Error", false);
        for (const ReturnPtrI<Router>& router : routers)
            EXPECT_TRUE(!router || !router->IsEnabled());
    }
}

TEST_F(Routers, RouterOfAnotherMakingIsLeftAlone) {
    class OwnRouter final : public Router {
        using Router::Router;
    };
    const ReturnPtrI<Router> router(new OwnRouter("Network", "Error"));
    SetRouterEnabled("Network", "Error", true);
    EXPECT_FALSE(router->IsEnabled());
    router->SetFlag(1);
    EXPECT_TRUE(router->IsEnabled());
}

TEST_F(Routers, TextsThatCannotBeKeptAreRefused) {
    const std::string longest(63, 'n');
    const std::string tooLong(64, 'n');
    EXPECT_FALSE(SetRouterEnabled(nullptr, "Error", true));
    EXPECT_FALSE(SetRouterEnabled("Network", nullptr, true));
    EXPECT_FALSE(SetRouterEnabled(tooLong.c_str(), "Error", true));
    EXPECT_FALSE(SetRouterEnabled("Network", tooLong.c_str(), true));
    EXPECT_FALSE(Create("Network", tooLong.c_str())->IsEnabled());
    EXPECT_TRUE(SetRouterEnabled(longest.c_str(), longest.c_str(), true));
    EXPECT_TRUE(Create(longest.c_str(), longest.c_str())->IsEnabled());
}

TEST_F(Routers, LongNamesAreReadNoFurtherThanNeeded) {
    const std::string unterminated(64, 'n');
    const auto exact = std::make_unique<char[]>(64);
    unterminated.copy(exact.get(), 64);
    EXPECT_FALSE(SetRouterEnabled(exact.get(), "Error", true));
}

TEST_F(Routers, EmptyTextsAreNamesLikeOthers) {
    EXPECT_TRUE(SetRouterEnabled("", "", true));
    EXPECT_TRUE(Create("", "")->IsEnabled());
    EXPECT_TRUE(SetRouterEnabled("Name behind the empty one", "Error", false));
    EXPECT_TRUE(Create("", "")->IsEnabled());
}

TEST_F(Routers, SwitchingAllocatesNothing) {
    const ReturnPtrI<Router> router = Create("Network", "Error");
    const Scripted::Allocations::Mark mark;
    SetRouterEnabled("Network", "Error", true);
    SetRouterEnabled("Network", "Packet Trace", true);
    EXPECT_EQ(mark.Requests(), 0u);
}

TEST_F(Routers, FailedCreationLeavesNothingBehind) {
    Support::ExpectBadAllocFromEveryAllocation(1, [] { Create("Network", "Error"); });
    EXPECT_TRUE(SetRouterEnabled("Network", "Error", true));
}

}  // namespace
