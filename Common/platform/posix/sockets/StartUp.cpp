#include "sockets/StartUp.h"

#include "Platform/System.h"
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/SocketTable.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>

namespace {

// The first start-up and the last clean-up take the lock, so that a start-up waits until a last
// clean-up has ended. All others only count: each operation of an extended socket starts up and
// cleans up.
constinit System::Lock startUpLock;
constinit std::atomic<unsigned int> startUpCount = 0;

// Returns false, and changes nothing, if the count is 0.
bool CountAnotherStartUp() noexcept {
    unsigned int count = startUpCount.load();
    while (count > 0 && !startUpCount.compare_exchange_weak(count, count + 1)) {
    }
    return count > 0;
}

// Returns false, and changes nothing, unless more than one start-up is counted.
bool UncountOneOfSeveral() noexcept {
    unsigned int count = startUpCount.load();
    while (count > 1 && !startUpCount.compare_exchange_weak(count, count - 1)) {
    }
    return count > 1;
}

constexpr unsigned short Version(unsigned int major, unsigned int minor) {
    return static_cast<unsigned short>(major | minor << 8U);
}
constexpr unsigned short HighestVersion = Version(2, 2);

// Returns the highest existing version that is not above the requested one.
unsigned short NegotiatedVersion(unsigned int major, unsigned int minor) {
    if (major == 1) return Version(1, std::min(minor, 1U));
    if (major == 2) return Version(2, std::min(minor, 2U));
    return HighestVersion;
}

// Registers the fork handler once: at the first start-up, since loading the module runs no code of
// it.
bool IsForkSeenTo() noexcept {
    static constinit bool done = false;
    done = done || Posix::ForgetCallsInForkedProcesses();
    return done;
}

void Describe(Winsock::StartupData& data, unsigned short version) {
    data = {};
    data.version = version;
    data.highestVersion = HighestVersion;
    std::strcpy(data.description, "WinSock 2.0");
    std::strcpy(data.systemStatus, "Running");
    if ((version & 0xFFU) > 1) return;
    // Only programs for version 1 read these two.
    data.maximumSockets = 32767;
    data.maximumDatagram = 65467;
}

WinsockError StartUp(unsigned short version, Winsock::StartupData* data) {
    const unsigned int major = version & 0xFFU;
    const unsigned int minor = version >> 8U;
    if (data != nullptr) Describe(*data, NegotiatedVersion(major, minor));
    if (major == 0) return WinsockError::VersionNotSupported;
    if (data == nullptr) return WinsockError::Fault;
    if (CountAnotherStartUp()) return WinsockError::None;
    const std::lock_guard guard(startUpLock);
    if (!IsForkSeenTo()) return WinsockError::SystemNotReady;
    ++startUpCount;
    return WinsockError::None;
}

}  // namespace

namespace Posix {

bool IsStarted() noexcept {
    return startUpCount.load(std::memory_order_relaxed) > 0;
}

bool RequireStarted() noexcept {
    if (IsStarted()) return true;
    Fail(WinsockError::NotStarted);
    return false;
}

}  // namespace Posix

int Winsock::WSAStartup(unsigned short version, StartupData* data) {
    return static_cast<int>(StartUp(version, data));
}

int Winsock::WSACleanup() {
    if (UncountOneOfSeveral()) return Posix::Succeed();
    const std::lock_guard guard(startUpLock);
    if (!Posix::RequireStarted()) return SocketError;
    if (--startUpCount == 0) Posix::CloseAllSockets();
    return Posix::Succeed();
}
