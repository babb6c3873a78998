#include "sockets/SocketTable.h"

#include <limits>

#include "errors/Errors.h"
#include "sockets/PortReuse.h"
#include "sockets/StartUp.h"
#include "system/Descriptors.h"

namespace Posix {

constinit SocketEntry socketTable[SocketTableSize] = {};

namespace {

// One more than the highest descriptor that ever had an entry, so that walks need not see the whole
// table.
constinit std::atomic<int> entriesInUse = 0;

void RaiseEntriesInUse(int count) noexcept {
    int known = entriesInUse.load(std::memory_order_relaxed);
    while (known < count &&
           !entriesInUse.compare_exchange_weak(known, count, std::memory_order_relaxed)) {
    }
}

Socket SocketAt(int descriptor) noexcept {
    return {&socketTable[descriptor], descriptor};
}

}  // namespace

void SocketEntry::AddUnreachable() noexcept {
    const auto count = Atomic(unreachable_);
    std::uint16_t known = count.load(std::memory_order_relaxed);
    while (known < std::numeric_limits<std::uint16_t>::max() &&
           !count.compare_exchange_weak(known, static_cast<std::uint16_t>(known + 1),
                                        std::memory_order_relaxed)) {
    }
}

bool SocketEntry::TakeUnreachable() noexcept {
    const auto count = Atomic(unreachable_);
    std::uint16_t known = count.load(std::memory_order_relaxed);
    while (known > 0 && !count.compare_exchange_weak(known, static_cast<std::uint16_t>(known - 1),
                                                     std::memory_order_relaxed)) {
    }
    return known > 0;
}

void SocketEntry::Open(std::uint32_t flags) noexcept {
    Atomic(unreachable_).store(0, std::memory_order_relaxed);
    Atomic(flags_).store(flags | Flag::Live, std::memory_order_release);
}

bool SocketEntry::Close() noexcept {
    return (Atomic(flags_).exchange(0, std::memory_order_acq_rel) & Flag::Live) != 0;
}

Socket FindSocket(Winsock::Handle handle) noexcept {
    if (IsSocketWith(handle, Flag::Live, Flag::Live)) return SocketAt(static_cast<int>(handle));
    Fail(IsStarted() ? WinsockError::NotSocket : WinsockError::NotStarted);
    return {};
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
    socketTable[handle].Open(flags);
    Succeed();
    return handle;
}

void CloseSocket(const Socket& socket) noexcept {
    LetPortBeBoundAgain(socket);
    // The entry goes first: once the kernel has the number back, it may give it to anybody.
    if (socket.entry->Close()) CloseDescriptor(socket.descriptor);
}

void CloseAllSockets() noexcept {
    const int end = entriesInUse.load(std::memory_order_relaxed);
    for (int descriptor = 0; descriptor < end; ++descriptor)
        CloseSocket(SocketAt(descriptor));
}

}  // namespace Posix
