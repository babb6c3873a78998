// What is known of each socket beside what the kernel knows.
//
// The kernel alone cannot tell an unbound socket from one bound to no port, a passed time-out from
// a non-blocking socket's refusal, or a reset that was already reported from an orderly end. The
// table also says which numbers are sockets of ours at all: no other number ever reaches the
// kernel.
//
// One thread may send while another receives on the same socket, so each change is one atomic
// operation. Relaxed order is enough, since an entry guards no other memory.
#pragma once

#include <Platform/Winsock.h>

#include <atomic>
#include <cstdint>

namespace Posix {

namespace Flag {
inline constexpr std::uint32_t Live = 1U << 0;
inline constexpr std::uint32_t Ipv6 = 1U << 1;
inline constexpr std::uint32_t Datagram = 1U << 2;
inline constexpr std::uint32_t Bound = 1U << 3;
inline constexpr std::uint32_t Listening = 1U << 4;
inline constexpr std::uint32_t Connecting = 1U << 5;
inline constexpr std::uint32_t Connected = 1U << 6;
inline constexpr std::uint32_t NonBlocking = 1U << 7;
inline constexpr std::uint32_t Reuse = 1U << 8;
// How the connection ended. Both stay: the kernel reports an end once and then pretends an orderly
// one.
inline constexpr std::uint32_t Reset = 1U << 9;
inline constexpr std::uint32_t Aborted = 1U << 10;
inline constexpr std::uint32_t ReceiveTimeout = 1U << 11;
inline constexpr std::uint32_t SendTimeout = 1U << 12;
// A connect call that had to be left unfinished has failed since. The kernel tells that once, to
// whoever asks first.
inline constexpr std::uint32_t ConnectFailed = 1U << 13;
// The connection came from a listener.
inline constexpr std::uint32_t Accepted = 1U << 14;

// What accepted sockets take over from their listener.
inline constexpr std::uint32_t Inherited =
    Ipv6 | Bound | NonBlocking | ReceiveTimeout | SendTimeout;
}  // namespace Flag

// Trivial, so that the table is zeroed memory that costs nothing until it is touched.
class SocketEntry {
public:
    std::uint32_t Flags() const noexcept { return Atomic(flags_).load(std::memory_order_relaxed); }
    bool Has(std::uint32_t flag) const noexcept { return (Flags() & flag) != 0; }
    void Set(std::uint32_t flags) noexcept {
        Atomic(flags_).fetch_or(flags, std::memory_order_relaxed);
    }
    void Clear(std::uint32_t flags) noexcept {
        Atomic(flags_).fetch_and(~flags, std::memory_order_relaxed);
    }
    void Change(std::uint32_t flag, bool on) noexcept { on ? Set(flag) : Clear(flag); }

    // Reports that a datagram did not reach its peer, each to be answered by one receive call.
    void AddUnreachable() noexcept;
    bool TakeUnreachable() noexcept;
    bool HasUnreachable() const noexcept {
        return Atomic(unreachable_).load(std::memory_order_relaxed) > 0;
    }

    void Open(std::uint32_t flags) noexcept;
    // Returns whether the entry was live: of two closers only one may close the descriptor.
    bool Close() noexcept;

private:
    template <typename Value>
    static std::atomic_ref<Value> Atomic(Value& value) noexcept {
        return std::atomic_ref<Value>(value);
    }
    template <typename Value>
    static std::atomic_ref<Value> Atomic(const Value& value) noexcept {
        return std::atomic_ref<Value>(const_cast<Value&>(value));  // atomic_ref has no const form
    }

    std::uint32_t flags_;
    std::uint16_t unreachable_;
};
static_assert(sizeof(SocketEntry) == 8);

// The kernel's usual upper limit for the descriptors of a process.
inline constexpr Winsock::Handle SocketTableSize = 1U << 20;

[[gnu::visibility("hidden")]] extern constinit SocketEntry socketTable[SocketTableSize];

// A live socket, or none.
struct Socket {
    SocketEntry* entry;
    int descriptor;

    explicit operator bool() const noexcept { return entry != nullptr; }
    bool Has(std::uint32_t flag) const noexcept { return entry->Has(flag); }
};

// Whether the handle's flags under the mask are the expected ones, which include Live.
inline bool IsSocketWith(Winsock::Handle handle, std::uint32_t mask, std::uint32_t flags) noexcept {
    return handle < SocketTableSize && (socketTable[handle].Flags() & mask) == flags;
}

// None when the handle is no open socket; the reason is then the thread's last error.
Socket FindSocket(Winsock::Handle handle) noexcept;

// Makes a handle of a descriptor that the kernel has just made, or closes it when there is no
// entry for it. A negative descriptor is the failure of the call that should have made it.
Winsock::Handle AdoptDescriptor(int made, std::uint32_t flags) noexcept;

void CloseSocket(const Socket& socket) noexcept;
void CloseAllSockets() noexcept;

}  // namespace Posix
