// Waiting for one socket, with a limit in milliseconds.
#pragma once

#include <VelBase/TextConversions.h>
#include <VelCompanion/Owners.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace VelCompanion {

// The unit of all limits.
using Milliseconds = std::chrono::milliseconds;

// A limit that is never reached. (windows.h may have made max a macro: hence the parentheses.)
inline constexpr Milliseconds NoLimit = (Milliseconds::max)();

// The moment at which an operation's time is over. A value.
class Deadline {
public:
    // Not the time of day, which may be set back.
    using Clock = std::chrono::steady_clock;

    // Counts from now on; 0 is over at once. Throws std::invalid_argument for a negative limit.
    explicit Deadline(Milliseconds limit) : limit_(limit), end_(Clock::now() + Capped(limit)) {}

    // Return whether there is a limit, the limit, the moment, and whether it has come.
    bool HasLimit() const noexcept { return limit_ != NoLimit; }
    Milliseconds Limit() const noexcept { return limit_; }
    Clock::time_point End() const noexcept { return end_; }
    bool IsOver() const noexcept { return HasLimit() && Clock::now() >= end_; }

    // What is left, rounded up; 0 when it is over.
    Milliseconds Left() const noexcept {
        const auto left = std::chrono::ceil<Milliseconds>(end_ - Clock::now());
        return left.count() > 0 ? left : Milliseconds(0);
    }

private:
    // A century is as good as any longer time, and no clock overflows.
    static Milliseconds Capped(Milliseconds limit) {
        constexpr Milliseconds century = std::chrono::hours(24) * 36525;
        if (limit < Milliseconds(0))
            throw std::invalid_argument("VelCompanion: a time limit is negative");
        return limit < century ? limit : century;
    }

    Milliseconds limit_;
    Clock::time_point end_;
};

namespace Detail {

// A selection waits whole seconds; the rest of the time is spent in short sleeps.
inline bool Wait(VelNet::Socket& socket, int event, const Deadline& deadline) {
    const CollectionOwner alone = MakeCollection();
    alone->Add(&socket, event);
    for (Milliseconds pause(1);; pause = pause < Milliseconds(10) ? pause * 2 : pause) {
        const Milliseconds left = deadline.Left();
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const unsigned int atMost = seconds.count() > 3600 ? 3600 : unsigned(seconds.count());
        if (Select(*alone, atMost)) return true;
        if (deadline.IsOver()) return false;
        if (atMost == 0) std::this_thread::sleep_for(left < pause ? left : pause);
    }
}

// The failure of an operation of the companion whose time is over.
inline VelNet::Exception TimeIsOver(const std::string& operation, const Deadline& deadline,
                                    const std::string& details = {}) {
    const std::string text = "VelCompanion::" + operation + "() - FAIL. Not done within " +
                             std::to_string(deadline.Limit().count()) + " ms" + details;
    return {VelBase::UTF8ToWideChar(text.c_str(), false).c_str(), VelNet::SOCKET_ERR_TIMEDOUT};
}

}  // namespace Detail

// Wait until the socket can be received from without blocking (bytes or a datagram, the end of the
// stream, an error; on a listening socket, a connection to accept), or can send; return false if
// the limit is reached first. 0 asks without waiting. For sockets of either family, blocking or
// not, connected in any way.
//
// They put the socket into a collection of their own, and so take and release a reference to it: of
// the threads that use a socket, only one may be in these operations at a time, and the socket must
// be owned (VelBase::ReturnPtrI).
//
// Throw: SOCKET_ERR_NOTSOCK     the socket is closed
//        SOCKET_ERR_INTR        another thread closed it during the wait
//        std::invalid_argument  the limit is negative
//        std::bad_alloc
[[nodiscard]] inline bool WaitToReceive(VelNet::Socket& socket, Milliseconds limit) {
    return Detail::Wait(socket, VelNet::EVENT_READ, Deadline(limit));
}
[[nodiscard]] inline bool WaitToSend(VelNet::Socket& socket, Milliseconds limit) {
    return Detail::Wait(socket, VelNet::EVENT_WRITE, Deadline(limit));
}

}  // namespace VelCompanion
