// What the library knows about each socket beyond what the kernel knows.
//
// The kernel does not refuse the calls that Winsock refuses on an unbound socket, it returns EAGAIN
// for an elapsed timeout and for a non-blocking socket that is not ready, and a reset that it has
// reported once looks like an orderly end afterwards. The table also says which numbers are the
// library's sockets: no other number reaches the kernel.
//
// One thread may send while another receives on the same socket, so each change is one atomic
// operation. Relaxed order is sufficient for reading a flag, since the flags publish no other
// memory; only entering and closing need sequential consistency, see SocketEntry::Enter.
//
// Each call on a handle counts itself in the entry while it runs. closesocket first makes the
// handle invalid, then wakes the calls that wait, and the kernel gets the number back only when all
// have left. So no call meets the number's next owner, neither with a late result nor with its next
// system call. The price is two atomic additions per call.
#pragma once

#include "Platform/Winsock.h"
#include "errors/Errors.h"

#include <atomic>
#include <cstdint>
#include <limits>
#include <utility>

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
// How the connection ended. Both flags are permanent: the kernel reports an end once and pretends
// an orderly one afterwards.
inline constexpr std::uint32_t Reset = 1U << 9;
inline constexpr std::uint32_t Aborted = 1U << 10;
inline constexpr std::uint32_t ReceiveTimeout = 1U << 11;
inline constexpr std::uint32_t SendTimeout = 1U << 12;
// A connect call that was left unfinished has failed since. The kernel reports that once, to
// whoever asks first.
inline constexpr std::uint32_t ConnectFailed = 1U << 13;
// The connection was accepted by a listener.
inline constexpr std::uint32_t Accepted = 1U << 14;
// A datagram socket's queue may hold datagrams that others sent before the socket had its peer.
inline constexpr std::uint32_t Strangers = 1U << 15;
// A thread is asking for the outcome of an unfinished connect call.
inline constexpr std::uint32_t Concluding = 1U << 16;
// The listener's timeouts have been set since it began to listen.
inline constexpr std::uint32_t NewTimeouts = 1U << 17;
// A datagram socket was bound to one address, see AuxiliarySockets.h.
inline constexpr std::uint32_t OwnAddress = 1U << 18;
// The datagram socket has a Reception.
inline constexpr std::uint32_t Reception = 1U << 19;

// Whether a transfer in this direction may go straight to the kernel: the socket is a connected
// stream, the connection has not ended and there is no timeout. Derived from the other flags and
// updated with them, so that a transfer tests one bit.
inline constexpr std::uint32_t DirectSend = 1U << 30;
inline constexpr std::uint32_t DirectReceive = 1U << 31;

constexpr std::uint32_t WithDirect(std::uint32_t flags) noexcept {
    constexpr std::uint32_t plain = Live | Connected;
    const bool direct = (flags & (plain | Datagram | Reset | Aborted)) == plain;
    flags &= ~(DirectSend | DirectReceive);
    if (direct && (flags & SendTimeout) == 0) flags |= DirectSend;
    if (direct && (flags & ReceiveTimeout) == 0) flags |= DirectReceive;
    return flags;
}

// What accepted sockets inherit from their listener, apart from the blocking mode.
inline constexpr std::uint32_t Inherited = Ipv6 | Bound | ReceiveTimeout | SendTimeout;
}  // namespace Flag

// Trivial, so that the table is in .bss and takes up no memory until it is touched. Eight bytes, so
// that scaled addressing (base + index * 8) finds an entry.
class alignas(8) SocketEntry {
public:
    std::uint32_t Flags() const noexcept { return Atomic(flags_).load(std::memory_order_relaxed); }
    bool Has(std::uint32_t flag) const noexcept { return (Flags() & flag) != 0; }
    // Returns the previous flags.
    std::uint32_t Set(std::uint32_t flags) noexcept { return Modify(flags, 0); }
    void Clear(std::uint32_t flags) noexcept { Modify(0, flags); }
    void Change(std::uint32_t flag, bool on) noexcept { Modify(on ? flag : 0, on ? 0 : flag); }

    // A call counts itself before it reads the flags: either it then sees that the handle is
    // invalid, or the closing thread sees the call.
    void Enter() noexcept { Atomic(calls_).fetch_add(1, std::memory_order_seq_cst); }
    bool IsInside(std::uint32_t flag) const noexcept {
        return (Atomic(flags_).load(std::memory_order_seq_cst) & flag) != 0;
    }
    // Returns result, so that a call can end with this.
    int Leave(int result = 0) noexcept {
        return --Atomic(calls_) >= 0 ? result : CloseIfLeft(result);
    }
    bool HasCalls() const noexcept { return Atomic(calls_).load(std::memory_order_seq_cst) > 0; }

    // After fork: the calls of the parent's threads do not exist in the child.
    void ForgetCalls() noexcept { Atomic(calls_).store(0, std::memory_order_relaxed); }

    void Open(std::uint32_t flags) noexcept;
    // Makes the handle invalid. Returns whether it was valid: of two threads that close it, only
    // one may close the descriptor.
    bool TakeHandle() noexcept;
    // Closes the descriptor now, or when the last call leaves.
    void CloseOnceLeft() noexcept;

private:
    static constexpr std::int32_t Closing = std::numeric_limits<std::int32_t>::min();

    // Returns the flags as they were.
    std::uint32_t Modify(std::uint32_t set, std::uint32_t cleared) noexcept;

    [[gnu::cold, gnu::noinline]] int CloseIfLeft(int result = 0) noexcept;

    template <typename Value>
    static std::atomic_ref<Value> Atomic(Value& value) noexcept {
        return std::atomic_ref<Value>(value);
    }
    template <typename Value>
    static std::atomic_ref<Value> Atomic(const Value& value) noexcept {
        return std::atomic_ref<Value>(const_cast<Value&>(value));  // atomic_ref has no const form
    }

    std::int32_t calls_;  // running calls, plus Closing if the last one is to close
    std::uint32_t flags_;
};
static_assert(sizeof(SocketEntry) == 8);

// The kernel's usual limit for the descriptors of a process (fs.nr_open).
inline constexpr Winsock::Handle SocketTableSize = 1U << 20;

[[gnu::visibility("hidden")]] extern constinit SocketEntry socketTable[SocketTableSize];

// A socket while a call uses it, or none. Its number stays reserved until the call has ended.
class Socket {
public:
    Socket() noexcept = default;
    explicit Socket(int number) noexcept : entry(&socketTable[number]), descriptor(number) {
        entry->Enter();
    }
    Socket(Socket&& other) noexcept
        : entry(std::exchange(other.entry, nullptr)), descriptor(other.descriptor) {}
    Socket& operator=(Socket&& other) noexcept {
        std::swap(entry, other.entry);
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ~Socket() {
        if (entry != nullptr) entry->Leave();
    }

    explicit operator bool() const noexcept { return entry != nullptr; }
    bool Has(std::uint32_t flag) const noexcept { return entry->Has(flag); }

    // Returns false from the moment that another thread closes it.
    bool IsOpen() const noexcept { return Has(Flag::Live); }

    SocketEntry* entry = nullptr;
    int descriptor = -1;
};

// Sets the last error of a call whose handle is not an open socket.
[[gnu::cold]] void FailWithoutSocket() noexcept;

// Returns none if the descriptor is not an open socket.
inline Socket SocketAt(int descriptor) noexcept {
    if (!socketTable[descriptor].Has(Flag::Live)) return {};
    Socket socket(descriptor);
    if (!socket.entry->IsInside(Flag::Live)) return {};
    return socket;
}

// Returns none, with the reason as the last error, if the handle is not an open socket.
inline Socket FindSocket(Winsock::Handle handle) noexcept {
    if (handle < SocketTableSize) [[likely]] {
        if (Socket socket = SocketAt(static_cast<int>(handle))) [[likely]]
            return socket;
    }
    FailWithoutSocket();
    return {};
}

// The result of a call that may have waited, or 10004 if the socket was closed meanwhile. A
// positive result stands even then; 0 does not, since the shutdown that wakes a waiting call makes
// it return that.
inline int UnlessClosed(const Socket& socket, int result) noexcept {
    return result > 0 || socket.IsOpen() ? result : Fail(WinsockError::Interrupted);
}

// Returns the handle for a new descriptor, or closes that if there is no entry for it. A negative
// descriptor stands for the failure of the call that should have created it.
Winsock::Handle AdoptDescriptor(int made, std::uint32_t flags) noexcept;

// Closes the socket once all other calls on it have ended, and wakes those that wait. Returns false
// if another thread is closing it.
bool CloseSocket(Socket socket) noexcept;
void CloseAllSockets() noexcept;

// Ensures that a forked child does not count the calls of its parent's threads. Returns false if
// there is no memory for that.
bool ForgetCallsInForkedProcesses() noexcept;

}  // namespace Posix
