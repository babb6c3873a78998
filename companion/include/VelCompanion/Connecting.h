// Connecting and accepting within a limit of time, with sockets of either family.
#pragma once

#include <VelBase/ReturnPtrI.h>
#include <VelBase/ReturnString.h>
#include <VelCompanion/Errors.h>
#include <VelCompanion/Strings.h>
#include <VelCompanion/Waiting.h>
#include <VelNet/Exception.h>
#include <VelNet/Octets.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>

#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace VelCompanion {

namespace Detail {

// Closes a socket when the time is over, on a thread of its own: what the library offers to end an
// operation that another thread waits in.
class ClosingClock {
public:
    ClosingClock(VelNet::Socket& socket, const Deadline& deadline)
        : thread_([this, &socket, end = deadline.End()] { Run(socket, end); }) {}
    ~ClosingClock() { Stop(); }
    ClosingClock(const ClosingClock&) = delete;
    ClosingClock& operator=(const ClosingClock&) = delete;

    // Stops the clock for good and returns whether it was too late: the socket is closed then.
    bool Stop() {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            isStopped_ = true;
        }
        stopped_.notify_one();
        if (thread_.joinable()) thread_.join();
        return isOver_;
    }

private:
    void Run(VelNet::Socket& socket, Deadline::Clock::time_point end) {
        {
            std::unique_lock<std::mutex> lock(mutex_);
            if (stopped_.wait_until(lock, end, [this] { return isStopped_; })) return;
            isOver_ = true;
        }
        try {
            socket.Close();
        } catch (...) {
            return;  // an extended socket that was closed before; the operation has failed by that
        }
    }

    std::mutex mutex_;
    std::condition_variable stopped_;
    bool isStopped_ = false;
    bool isOver_ = false;
    std::thread thread_;  // the last member: it uses the others
};

// Makes the attempt and closes the socket under it when the time is over.
template <class Attempt>
void ConnectWithin(VelNet::Socket& socket, const std::string& peer, Milliseconds limit,
                   const Attempt& attempt) {
    const Deadline deadline(limit);
    if (!deadline.HasLimit()) return attempt();
    ClosingClock clock(socket, deadline);
    try {
        attempt();
    } catch (const VelNet::Exception& failure) {
        if (clock.Stop()) throw TimeIsOver("ConnectWithin", deadline, ": " + peer);
        if (!WouldBlock(failure)) throw;
        throw std::invalid_argument(
            "VelCompanion::ConnectWithin: the socket does not block; make it so once it is "
            "connected");
    }
    if (clock.Stop()) throw TimeIsOver("ConnectWithin", deadline, ": " + peer);
}

// Tries the host's addresses in the resolver's order until one is connected. The last one's failure
// is thrown.
inline void ConnectToHost(VelNet::Socket& socket, const std::string& host, unsigned short port) {
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName(host.c_str());
    for (unsigned int index = 0;; ++index) {
        try {
            return socket.Connect(addresses->GetOctets(index), port);
        } catch (const VelNet::Exception& failure) {
            if (WouldBlock(failure) || index + 1 == addresses->GetCount()) throw;
        }
    }
}

}  // namespace Detail

// Connect a blocking stream socket, for which no more than the limit is waited. Afterwards it is as
// Socket::Connect leaves it: blocking, with its status and its trace records right, so that it can
// be put into a collection, and SetNonBlocking may follow. (A socket that connects without blocking
// never gets that status, and a selection does not report that it was refused: such an attempt is
// not what these are made of.)
//
// If the limit is reached first, the socket is closed and SOCKET_ERR_TIMEDOUT thrown. After any
// other failure it is as it was.
//
// The time in which a host's name is resolved counts, but nothing in the library can cut it short:
// if the resolver takes longer than the limit, so do these. Give an address where that matters.
// They start a thread for the length of the call, which closes the socket at its end (Socket::Close
// says what that means while trace records are switched on).
//
// Throw: what Socket::Connect and SocketXt::Connect throw, for the last address that was tried
//        SOCKET_ERR_TIMEDOUT    there was no answer within the limit
//        std::invalid_argument  the socket does not block (an extended socket that does not may
//                               show that by any failure); a host or port contains a zero; the
//                               limit is negative
//        std::system_error      no thread can be started
//        std::bad_alloc
inline void ConnectWithin(VelNet::SocketXt& socket, std::string_view host, std::string_view port,
                          Milliseconds limit) {
    const std::string hostName = Detail::WithoutZero(host);
    const std::string portName = Detail::WithoutZero(port);
    Detail::ConnectWithin(socket, hostName + " port " + portName, limit,
                          [&] { socket.Connect(hostName.c_str(), portName.c_str()); });
}

// The same for a socket of either family, with a port in host byte order. A classic socket's host
// is resolved by SocketAddress::GetOctetsFromMachineName.
//
// Throws: also what that throws
inline void ConnectWithin(VelNet::Socket& socket, std::string_view host, unsigned short port,
                          Milliseconds limit) {
    const std::string portName = std::to_string(port);
    // Its Connect by Octets would do nothing.
    if (auto* const extended = dynamic_cast<VelNet::SocketXt*>(&socket))
        return ConnectWithin(*extended, host, portName, limit);
    const std::string hostName = Detail::WithoutZero(host);
    Detail::ConnectWithin(socket, hostName + " port " + portName, limit,
                          [&] { Detail::ConnectToHost(socket, hostName, port); });
}

// The same with an address, for which nothing is resolved.
inline void ConnectWithin(VelNet::Socket& socket, const VelNet::Octets& address,
                          unsigned short port, Milliseconds limit) {
    const std::string host = address.GetAddressString().c_str();
    if (dynamic_cast<VelNet::SocketXt*>(&socket) != nullptr)
        return ConnectWithin(socket, host, port, limit);
    Detail::ConnectWithin(socket, host + " port " + std::to_string(port), limit,
                          [&] { socket.Connect(address, port); });
}

// Accepts the next connection like Socket::Accept, and stores the peer's address in remote. Returns
// an empty owner, with remote unchanged, if none came within the limit. The listener stays as it
// is. Waits like WaitToReceive, which says what that means for threads.
//
// With a blocking listener there is a gap: if the only client gives up between its arrival and its
// acceptance, the system's accept waits for the next one. Where clients are not trusted, call
// SetNonBlocking on the listener; the accepted sockets do not block either then.
//
// Throws: what Socket::Accept and WaitToReceive throw
[[nodiscard]] inline VelBase::ReturnPtrI<VelNet::Socket> AcceptWithin(VelNet::Socket& listener,
                                                                      VelNet::SocketAddress& remote,
                                                                      Milliseconds limit) {
    const Deadline deadline(limit);
    // Nothing ever becomes ready on a socket that does not listen: Accept says why.
    const bool listens = listener.GetStatus() == VelNet::STATUS_LISTENING;
    while (!listens || Detail::Wait(listener, VelNet::EVENT_ACCEPT, deadline)) {
        if (auto accepted = listener.Accept(remote)) return accepted;
        if (!listens) break;
    }
    return {};
}

// The same for an extended listener; host and port receive the peer's address in numeric form.
//
// Throws: what SocketXt::Accept throws, except SOCKET_ERR_WOULDBLOCK, and WaitToReceive
[[nodiscard]] inline VelBase::ReturnPtrI<VelNet::SocketXt> AcceptWithin(VelNet::SocketXt& listener,
                                                                        VelBase::ReturnString& host,
                                                                        VelBase::ReturnString& port,
                                                                        Milliseconds limit) {
    const Deadline deadline(limit);
    const bool listens = listener.GetStatus() == VelNet::STATUS_LISTENING;
    VelBase::ReturnPtrI<VelNet::SocketXt> accepted;
    while (!listens || Detail::Wait(listener, VelNet::EVENT_ACCEPT, deadline)) {
        try {
            listener.Accept(accepted, host, port);
            break;
        } catch (const VelNet::Exception& failure) {
            if (!listens || !WouldBlock(failure)) throw;
        }
    }
    return accepted;
}

}  // namespace VelCompanion
