// Start-up and shut-down that go well.

#include "StartUpFixture.h"

#include <Socket/SocketAPI.h>

#include <cstring>
#include <optional>
#include <type_traits>

namespace FoundationTests {
namespace {

class StartUp : public StartUpTest {};

TEST_F(StartUp, FirstObjectBringsEverythingUpInOrder) {
    const SocketInitialization initialization;
    EXPECT_EQ(
        Transcript(),
        (Lines{"VelSynch up", "VelRegistry up", "VelLog up", "CreateRouter(Network, Error, -3)",
               "CreateRouter(Network, Connection Trace, -3)",
               "CreateRouter(Network, Packet Trace, -3)",
               "CreateRouter(Network, Verbose Packet Trace, -3)", "WSAStartup(0x0202)"}));
    EXPECT_EQ(g_socketInitializationCount, 1);
    EXPECT_NE(g_socketLayer, nullptr);
    EXPECT_EQ(g_startUpLock, 0U);
}

TEST_F(StartUp, LastObjectBringsEverythingDownInReverseOrder) {
    {
        const SocketInitialization initialization;
        ClearTranscript();
    }
    EXPECT_EQ(Transcript(), (Lines{"WSACleanup()", "~Router(Network, Verbose Packet Trace)",
                                   "~Router(Network, Packet Trace)",
                                   "~Router(Network, Connection Trace)", "~Router(Network, Error)",
                                   "VelLog down", "VelRegistry down", "VelSynch down"}));
}

TEST_F(StartUp, FurtherObjectsOnlyCount) {
    std::optional<SocketInitialization> first(std::in_place);
    const SocketLayerState* const layer = g_socketLayer;
    ClearTranscript();
    {
        const SocketInitialization second;
        EXPECT_EQ(g_socketInitializationCount, 2);
        const SocketInitialization third;
        EXPECT_EQ(g_socketInitializationCount, 3);
    }
    EXPECT_EQ(g_socketInitializationCount, 1);
    EXPECT_EQ(g_socketLayer, layer);
    EXPECT_EQ(Transcript(), Lines());
    first.reset();
    EXPECT_EQ(Transcript(), ShutDownLines());
}

TEST_F(StartUp, LayerStaysUpUntilTheLastObjectGoesWhicheverThatIs) {
    std::optional<SocketInitialization> first(std::in_place);
    std::optional<SocketInitialization> second(std::in_place);
    first.reset();
    EXPECT_EQ(Transcript(), StartUpLines());
    EXPECT_NE(g_socketLayer, nullptr);
    second.reset();
    EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
}

TEST_F(StartUp, FurtherObjectsAllocateNothing) {
    const SocketInitialization first;
    const Allocations::Mark mark;
    { const SocketInitialization second; }
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(StartUp, LayerGoesUpAgainAfterItWentDown) {
    for (int round = 0; round < 3; ++round) {
        const SocketInitialization initialization;
        EXPECT_NE(g_socketLayer, nullptr);
    }
    const Lines round = StartUpLines() + ShutDownLines();
    EXPECT_EQ(Transcript(), round + round + round);
}

TEST_F(StartUp, EachRouterHasItsMemberAndOneReference) {
    const SocketInitialization initialization;
    for (const auto& [category, member] : RouterMembers) {
        const VelLog::Router* const router = (g_socketLayer->*member).Get();
        ASSERT_NE(router, nullptr) << category;
        EXPECT_STREQ(router->Name(), "Network") << category;
        EXPECT_EQ(router->Category(), category);
        EXPECT_EQ(router->GetReferenceCount(), 1) << category;
    }
}

TEST_F(StartUp, CachedIpVersionStartsAsZeroEachTime) {
    for (int round = 0; round < 3; ++round) {
        const SocketInitialization initialization;
        EXPECT_EQ(g_socketLayer->cachedIpVersion, 0);
        g_socketLayer->cachedIpVersion = 6;
    }
}

TEST_F(StartUp, CachedIpVersionIsSetWhateverTheMemoryHeld) {
    const StateMemory memory;
    void* (*volatile fill)(void*, int, std::size_t) = std::memset;
    fill(&*memory, 0xAB, sizeof(SocketLayerState));
    VelNet::SocketAPI::Initialize(*memory);
    EXPECT_EQ((*memory).cachedIpVersion, 0);
    static_assert(std::is_same_v<decltype(SocketLayerState::cachedIpVersion)::value_type, int>);
    VelNet::SocketAPI::Finalize(*memory);
}

TEST_F(StartUp, StateHasItsMembersInOrder) {
    const SocketInitialization initialization;
    const auto at = [](const auto& member) { return reinterpret_cast<std::uintptr_t>(&member); };
    const SocketLayerState& state = *g_socketLayer;
    EXPECT_LT(at(state.synchronization), at(state.registry));
    EXPECT_LT(at(state.registry), at(state.log));
    EXPECT_LT(at(state.log), at(state.errorRouter));
    EXPECT_LT(at(state.errorRouter), at(state.connectionTraceRouter));
    EXPECT_LT(at(state.connectionTraceRouter), at(state.packetTraceRouter));
    EXPECT_LT(at(state.packetTraceRouter), at(state.verbosePacketTraceRouter));
    EXPECT_LT(at(state.verbosePacketTraceRouter), at(state.cachedIpVersion));
}

TEST_F(StartUp, StateIsPublishedOnlyWhenWinsockRuns) {
    Lines seen;
    ObserveAll([&](const Event& event) {
        seen.push_back(event.call + (g_socketLayer == nullptr ? ": down" : ": up"));
    });
    { const SocketInitialization initialization; }
    EXPECT_EQ(seen, (Lines{"VelSynch up: down", "VelRegistry up: down", "VelLog up: down",
                           "CreateRouter: down", "CreateRouter: down", "CreateRouter: down",
                           "CreateRouter: down", "WSAStartup: down", "WSACleanup: up",
                           "~Router: up", "~Router: up", "~Router: up", "~Router: up",
                           "VelLog down: up", "VelRegistry down: up", "VelSynch down: up"}));
}

TEST_F(StartUp, CountChangesBeforeAnythingIsDone) {
    std::vector<int> counts;
    ObserveAll([&](const Event&) { counts.push_back(g_socketInitializationCount); });
    { const SocketInitialization initialization; }
    EXPECT_EQ(counts, (std::vector<int>{1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(StartUp, EachRouterMemberIsNullBeforeItsRouterIsReleased) {
    Lines wrong;
    int routers = 0;
    Observe("~Router", [&](const Event& event) {
        bool gone = true;
        for (auto member = RouterMembers.rbegin(); member != RouterMembers.rend(); ++member) {
            const bool own = member->category == CategoryOf(event);
            if (own) gone = false;
            const bool null = (g_socketLayer->*member->member).Get() == nullptr;
            if (own && !null) wrong.push_back(member->category + " is there at its own end");
            if (!own && !gone && null) wrong.push_back(member->category + " is gone too early");
        }
        ++routers;
    });
    { const SocketInitialization initialization; }
    EXPECT_EQ(routers, 4);
    EXPECT_EQ(wrong, Lines());
}

TEST_F(StartUp, StateIsTheOnlyMemoryThatTheLayerAddsToItsRouters) {
    const Allocations::Mark mark;
    const SocketInitialization initialization;
    const std::vector<std::size_t> sizes = mark.Sizes();
    ASSERT_EQ(sizes.size(), 5U);  // the state and four routers
    EXPECT_EQ(sizes[0], sizeof(SocketLayerState));
}

TEST_F(StartUp, AssignmentDoesNothingAndReturnsTheTarget) {
    SocketInitialization target;
    const SocketInitialization source;
    ClearTranscript();
    EXPECT_EQ(&(target = source), &target);
    const SocketInitialization& itself = target;
    EXPECT_EQ(&(target = itself), &target);
    EXPECT_EQ(g_socketInitializationCount, 2);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(StartUp, ObjectCarriesNoData) {
    static_assert(std::is_empty_v<SocketInitialization>);
    static_assert(std::is_nothrow_destructible_v<SocketInitialization>);
    static_assert(!std::is_polymorphic_v<SocketInitialization>);
    EXPECT_EQ(Transcript(), Lines());
}

// Ends an object that was never made, as a host does that ends one twice.
void EndOneObjectTooMany() {
    alignas(SocketInitialization) unsigned char storage[sizeof(SocketInitialization)] = {};
    std::destroy_at(reinterpret_cast<SocketInitialization*>(storage));
}

TEST_F(StartUp, EndOfAnObjectTooManyMakesTheCountNegativeAndShutsNothingDown) {
    EndOneObjectTooMany();
    EXPECT_EQ(g_socketInitializationCount, -1);
    EXPECT_EQ(g_startUpLock, 0U);
    EndOneObjectTooMany();
    EXPECT_EQ(g_socketInitializationCount, -2);
    EXPECT_EQ(Transcript(), Lines());

    g_socketInitializationCount = 0;
}

TEST_F(StartUp, OnlyTheCountThatReachesZeroShutsDown) {
    const SocketInitialization kept;
    ClearTranscript();
    g_socketInitializationCount = 0;
    EndOneObjectTooMany();
    EXPECT_EQ(g_socketInitializationCount, -1);
    EXPECT_NE(g_socketLayer, nullptr);
    EXPECT_EQ(Transcript(), Lines());
    g_socketInitializationCount = 1;
}

TEST_F(StartUp, NegativeCountIsMadeUpForBeforeTheLayerStarts) {
    EndOneObjectTooMany();
    {
        const SocketInitialization bringsTheCountToZero;
        EXPECT_EQ(g_socketInitializationCount, 0);
        EXPECT_EQ(g_socketLayer, nullptr);
        EXPECT_EQ(Transcript(), Lines());
        {
            const SocketInitialization starts;
            EXPECT_EQ(g_socketInitializationCount, 1);
            EXPECT_EQ(Transcript(), StartUpLines());
        }
        EXPECT_EQ(g_socketInitializationCount, 0);
        EXPECT_EQ(g_socketLayer, nullptr);
        EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
    }
    EXPECT_EQ(g_socketInitializationCount, -1);
    g_socketInitializationCount = 0;
}

TEST_F(StartUp, NothingIsLoggedWhenAllGoesWell) {
    EnableAllRouters();
    { const SocketInitialization initialization; }
    EXPECT_EQ(CountOf("LogMessage"), 0);
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

class StartUpLayerRouters : public StartUpTest {};

TEST_F(StartUpLayerRouters, AreNotFoundWhileTheLayerIsDown) {
    EnableAllRouters();
    for (const auto& [category, member] : RouterMembers)
        EXPECT_EQ(VelNet::EnabledRouter(member), nullptr) << category;
    EXPECT_FALSE(VelNet::IsAnyPacketTraceEnabled());
}

TEST_F(StartUpLayerRouters, AreNotFoundWhenTheyAreOff) {
    const SocketInitialization initialization;
    for (const auto& [category, member] : RouterMembers)
        EXPECT_EQ(VelNet::EnabledRouter(member), nullptr) << category;
}

TEST_F(StartUpLayerRouters, AreFoundWhenTheirOwnFlagIsSet) {
    const SocketInitialization initialization;
    for (const auto& [category, member] : RouterMembers) {
        for (const int flag : {1, 2, 0x80, 0xFF}) {
            SetRouterFlag(category, static_cast<unsigned char>(flag));
            for (const auto& [otherCategory, otherMember] : RouterMembers) {
                const bool own = otherCategory == category;
                EXPECT_EQ(VelNet::EnabledRouter(otherMember),
                          own ? (g_socketLayer->*member).Get() : nullptr)
                    << category << ", " << otherCategory;
            }
        }
        SetRouterFlag(category, 0);
    }
}

TEST_F(StartUpLayerRouters, AnyPacketTraceIsOneOfTheTwo) {
    const SocketInitialization initialization;
    const auto any = [](unsigned char plain, unsigned char verbose) {
        SetRouterFlag("Packet Trace", plain);
        SetRouterFlag("Verbose Packet Trace", verbose);
        return VelNet::IsAnyPacketTraceEnabled();
    };
    EXPECT_FALSE(any(0, 0));
    EXPECT_TRUE(any(1, 0));
    EXPECT_TRUE(any(0, 1));
    EXPECT_TRUE(any(1, 1));
    SetRouterFlag("Error", 1);
    SetRouterFlag("Connection Trace", 1);
    EXPECT_FALSE(any(0, 0));
}

}  // namespace
}  // namespace FoundationTests
