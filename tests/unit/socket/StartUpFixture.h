// What the tests of start-up and shut-down share.
//
// A test finds the layer down and must leave it so: count 0, lock word 0, nothing published.
#pragma once

#include <Socket/SocketLayerState.h>
#include <Socket/StartUpLock.h>
#include <VelNet/SocketInitialization.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "scripted/RecordingServices.h"
#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {

using namespace Scripted;
using VelNet::g_socketInitializationCount;
using VelNet::g_socketLayer;
using VelNet::g_startUpLock;
using VelNet::SocketInitialization;
using VelNet::SocketLayerState;
using VelNet::StartUpLockHeld;

// Count 0, lock word 0, nothing published.
void ExpectLayerDown();

class StartUpTest : public PlatformTest {
protected:
    void SetUp() override;
    void TearDown() override;
};

// One of the seven things that are built before Winsock is started.
struct BuildUpStep {
    std::string call;
    int callsBefore;  // of the same name
    std::string line;
    std::string undoing;
};
extern const std::vector<BuildUpStep> BuildUpSteps;

// The transcript of the steps before the one of that number, and of their undoing.
Lines BuildUpLines(std::size_t steps = 7);
Lines UndoingLines(std::size_t steps = 7);

Lines StartUpLines();        // all seven steps and WSAStartup
Lines ShutDownLines();       // WSACleanup and the undoing of all seven
Lines FailedStartUpLines();  // all seven steps, WSAStartup, their undoing

Lines operator+(Lines first, const Lines& second);

// The category of the router that a "~Router" event is about.
std::string CategoryOf(const Event& event);

using RouterMember = VelBase::InterfaceHolder<VelLog::Router> SocketLayerState::*;

struct NamedRouterMember {
    std::string category;
    RouterMember member;
};
// In the order in which they are made.
extern const std::vector<NamedRouterMember> RouterMembers;

// Memory for a state, in which no object lives.
class StateMemory {
public:
    StateMemory() : memory_(std::allocator<SocketLayerState>().allocate(1)) {}
    ~StateMemory() { std::allocator<SocketLayerState>().deallocate(memory_, 1); }
    StateMemory(const StateMemory&) = delete;
    StateMemory& operator=(const StateMemory&) = delete;

    SocketLayerState& operator*() const { return *memory_; }

private:
    SocketLayerState* memory_;
};

}  // namespace FoundationTests
