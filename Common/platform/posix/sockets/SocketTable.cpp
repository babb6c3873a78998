#include "sockets/SocketTable.h"

#include "errors/Errors.h"
#include "sockets/DatagramLosses.h"
#include "sockets/PortReuse.h"
#include "sockets/Reception.h"
#include "sockets/StartUp.h"
#include "system/Descriptors.h"
#include "system/Waiting.h"

#include <pthread.h>
#include <sys/socket.h>

#include <ctime>

namespace Posix {

constinit SocketEntry socketTable[SocketTableSize] = {};

namespace {

// One more than the highest descriptor that ever had an entry, which bounds walks through the
// table.
constinit std::atomic<int> entriesInUse = 0;

void RaiseEntriesInUse(int count) noexcept {
    int known = entriesInUse.load(std::memory_order_relaxed);
    while (known < count &&
           !entriesInUse.compare_exchange_weak(known, count, std::memory_order_relaxed)) {
    }
}

// Wakes the calls that wait on the socket (shutdown) until all have left. Repeats that, since a
// call may begin to wait just after it was woken. Begins with SHUT_RD, for as long as a receiver
// may take to leave on a busy host: if that is enough, the peer sees no more than the close, which
// may be a reset. Gives up after a second, since closesocket may run in a signal handler that has
// interrupted the very call.
void EndCalls(const SocketEntry& entry, int descriptor) noexcept {
    if (!entry.HasCalls()) return;
    const CancellationGuard whole;
    constexpr long long Patience = 1'000'000'000;
    constexpr long long ReceiversLeave = 20'000'000;
    constexpr timespec ToLeave = {.tv_sec = 0, .tv_nsec = 100'000};
    const long long begin = MonotonicTime();
    while (entry.HasCalls()) {
        const long long passed = MonotonicTime() - begin;
        if (passed > Patience) return;
        ::shutdown(descriptor, passed < ReceiversLeave ? SHUT_RD : SHUT_RDWR);
        ::clock_nanosleep(CLOCK_MONOTONIC, 0, &ToLeave, nullptr);
    }
}

void ForgetCalls() noexcept {
    const int end = entriesInUse.load(std::memory_order_relaxed);
    for (int descriptor = 0; descriptor < end; ++descriptor)
        socketTable[descriptor].ForgetCalls();
}

}  // namespace

void SocketEntry::Open(std::uint32_t flags) noexcept {
    Atomic(flags_).store(Flag::WithDirect(flags | Flag::Live), std::memory_order_seq_cst);
}

bool SocketEntry::TakeHandle() noexcept {
    return (Modify(0, Flag::Live) & Flag::Live) != 0;
}

std::uint32_t SocketEntry::Modify(std::uint32_t set, std::uint32_t cleared) noexcept {
    const auto flags = Atomic(flags_);
    std::uint32_t known = flags.load(std::memory_order_relaxed);
    while (!flags.compare_exchange_weak(known, Flag::WithDirect((known | set) & ~cleared))) {
    }
    return known;
}

void SocketEntry::CloseOnceLeft() noexcept {
    Atomic(calls_).fetch_add(Closing, std::memory_order_seq_cst);
    CloseIfLeft();
}

int SocketEntry::CloseIfLeft(int result) noexcept {
    // A signal's handler forked within this call: the child forgot it and goes on with it.
    std::int32_t forgotten = -1;
    if (Atomic(calls_).compare_exchange_strong(forgotten, 0)) return result;
    std::int32_t none = Closing;
    if (!Atomic(calls_).compare_exchange_strong(none, 0)) return result;
    const int descriptor = static_cast<int>(this - socketTable);
    if (Has(Flag::Reception)) CloseReception(descriptor);
    // The entry is cleared first: as soon as the kernel has the number back, any thread may get it.
    Atomic(flags_).store(0, std::memory_order_relaxed);
    CloseDescriptor(descriptor);
    return result;
}

void FailWithoutSocket() noexcept {
    Fail(IsStarted() ? WinsockError::NotSocket : WinsockError::NotStarted);
}

Winsock::Handle AdoptDescriptor(int made, std::uint32_t flags) noexcept {
    const int descriptor = MoveAboveStandardStreams(made);
    if (descriptor < 0) {
        FailFromErrno();
        return Winsock::InvalidSocket;
    }
    const auto handle = static_cast<Winsock::Handle>(descriptor);
    if (handle >= SocketTableSize) {
        CloseDescriptor(descriptor);
        Fail(WinsockError::TooManyOpen);
        return Winsock::InvalidSocket;
    }
    RaiseEntriesInUse(descriptor + 1);
    ForgetLosses(descriptor);
    socketTable[handle].Open(flags);
    Succeed();
    return handle;
}

bool CloseSocket(Socket socket) noexcept {
    if (!socket.entry->TakeHandle()) return false;
    LetPortBeBoundAgain(socket);
    SocketEntry& entry = *socket.entry;
    const int descriptor = socket.descriptor;
    socket = {};
    EndCalls(entry, descriptor);
    entry.CloseOnceLeft();
    return true;
}

void CloseAllSockets() noexcept {
    const int end = entriesInUse.load(std::memory_order_relaxed);
    for (int descriptor = 0; descriptor < end; ++descriptor) {
        if (Socket socket = SocketAt(descriptor)) CloseSocket(std::move(socket));
    }
}

bool ForgetCallsInForkedProcesses() noexcept {
    return ::pthread_atfork(nullptr, nullptr, ForgetCalls) == 0;
}

}  // namespace Posix
