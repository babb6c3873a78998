// What is known of each socket beside what the kernel knows.
//
// The kernel alone cannot tell an unbound socket from one bound to no port, a passed time-out from
// a non-blocking socket's refusal, or a reset that was already reported from an orderly end. The
// table also says which numbers are sockets of ours at all: no other number ever reaches the
// kernel.
//
// One thread may send while another receives on the same socket, so each change is one atomic
// operation. Relaxed order is enough, since an entry guards no other memory.
//
// Each call that is given a handle counts itself in the entry while it runs. closesocket takes the
// handle away first, then wakes the calls that wait, and the kernel has the number back only when
// all have left. So no call ever meets the number's next owner, neither with a late result nor with
// its next system call. What that costs a call is two atomic additions.
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
// A datagram socket's queue may hold what others sent before the socket had its peer.
inline constexpr std::uint32_t Strangers = 1U << 15;
// A thread is just asking what has become of an unfinished connect call.
inline constexpr std::uint32_t Concluding = 1U << 16;
// The listener's time-outs have been set since it began to listen.
inline constexpr std::uint32_t NewTimeouts = 1U << 17;
// A datagram socket was bound to one address, see AuxiliarySockets.h.
inline constexpr std::uint32_t OwnAddress = 1U << 18;
// More is known of what a datagram socket receives than is in its entry.
inline constexpr std::uint32_t Reception = 1U << 19;

// Whether a transfer of that direction may go straight to the kernel: the socket is a connected
// stream, nothing has ended and no time is limited. Follows from the other flags and changes with
// them, so that a transfer has one bit to ask for.
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

// What accepted sockets take over from their listener, beside its mode.
inline constexpr std::uint32_t Inherited = Ipv6 | Bound | ReceiveTimeout | SendTimeout;
}  // namespace Flag

// How the network reports that a datagram did not reach its peer.
enum class Loss { Unreachable, TooManyHops };

// Trivial, so that the table is zeroed memory that costs nothing until it is touched. Its size is a
// power of two, so that finding an entry takes no multiplication.
class alignas(16) SocketEntry {
public:
    std::uint32_t Flags() const noexcept { return Atomic(flags_).load(std::memory_order_relaxed); }
    bool Has(std::uint32_t flag) const noexcept { return (Flags() & flag) != 0; }
    // Returns the flags as they were.
    std::uint32_t Set(std::uint32_t flags) noexcept { return Modify(flags, 0); }
    void Clear(std::uint32_t flags) noexcept { Modify(0, flags); }
    void Change(std::uint32_t flag, bool on) noexcept { Modify(on ? flag : 0, on ? 0 : flag); }

    // The network's reports, each to be answered by one receive call.
    void AddLoss(Loss loss) noexcept;
    // The error that tells of one of them, or 0.
    int TakeLoss() noexcept;
    bool HasLoss() const noexcept {
        return Atomic(unreachable_).load(std::memory_order_relaxed) > 0 ||
               Atomic(tooManyHops_).load(std::memory_order_relaxed) > 0;
    }

    // A call counts itself in before it asks for the flags: then either it finds that the handle
    // was taken away, or the closer finds the call.
    void Enter() noexcept { Atomic(calls_).fetch_add(1, std::memory_order_seq_cst); }
    bool IsInside(std::uint32_t flag) const noexcept {
        return (Atomic(flags_).load(std::memory_order_seq_cst) & flag) != 0;
    }
    // Returns the call's result, for calls that leave with it.
    int Leave(int result = 0) noexcept {
        return --Atomic(calls_) >= 0 ? result : CloseIfLeft(result);
    }
    bool HasCalls() const noexcept { return Atomic(calls_).load(std::memory_order_seq_cst) > 0; }

    // The calls of the parent's threads are not in a process that fork has made.
    void ForgetCalls() noexcept { Atomic(calls_).store(0, std::memory_order_relaxed); }

    void Open(std::uint32_t flags) noexcept;
    // Takes the handle away. Returns whether it was still there: of two closers only one may close
    // the descriptor.
    bool TakeHandle() noexcept;
    // Closes the descriptor now, or else as soon as the last call has left.
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

    std::int32_t calls_;  // those that run, and Closing when the last one is to close
    std::uint32_t flags_;
    std::uint16_t unreachable_;
    std::uint16_t tooManyHops_;
};

// The kernel's usual upper limit for the descriptors of a process.
inline constexpr Winsock::Handle SocketTableSize = 1U << 20;

[[gnu::visibility("hidden")]] extern constinit SocketEntry socketTable[SocketTableSize];

// A socket while a call uses it, or none. Its number stays the socket's until the call has ended.
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

    // False from the moment on that another thread closes it.
    bool IsOpen() const noexcept { return Has(Flag::Live); }

    SocketEntry* entry = nullptr;
    int descriptor = -1;
};

// None when the handle is no open socket; the reason is then the thread's last error.
Socket FindSocket(Winsock::Handle handle) noexcept;

// The answer of a call that may have waited: what it got counts, but if it got nothing and its
// socket was closed meanwhile, that is what happened to it.
inline int UnlessClosed(const Socket& socket, int result) noexcept {
    return result > 0 || socket.IsOpen() ? result : Fail(WinsockError::Interrupted);
}

// Makes a handle of a descriptor that the kernel has just made, or closes it when there is no
// entry for it. A negative descriptor is the failure of the call that should have made it.
Winsock::Handle AdoptDescriptor(int made, std::uint32_t flags) noexcept;

// Closes the socket when all other calls on it have ended, and wakes those that wait. False when
// another thread closes it already.
bool CloseSocket(Socket socket) noexcept;
void CloseAllSockets() noexcept;

// Sees to it that processes made by fork do not count the calls of their parent's threads. False
// when there is no memory for that.
bool ForgetCallsInForkedProcesses() noexcept;

}  // namespace Posix
