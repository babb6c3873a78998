// A stop signal for threads that wait.
#pragma once

#include <VelCompanion/Pairs.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketCollection.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

namespace VelCompanion {

// Wakes a thread that waits in a selection, or in an operation of one socket, and tells it to stop:
//
//   VelCompanion::StopSignal signal;             // shared by both threads
//   signal.AddTo(*collection);                   // the waiting thread, for its collection
//   while (!signal.IsStopped()) { ... collection->Select(60) ... }
//
//   const VelCompanion::ClosedByStop closed(signal, *listener);   // or, for one socket
//   while (!signal.IsStopped()) { ... listener->Accept(remote) ... }
//
//   signal.Stop();                               // any thread
//
// Stop and IsStopped may be called by any thread at any time. The signal must live until the
// threads that it wakes have ended, and the socket layer must be up. Any number of threads may have
// a ClosedByStop, but only one may have collections with the signal: their entries, and those of
// each result, hold references to one socket.
class StopSignal {
public:
    // Throws: what MakeSocketPair throws
    StopSignal() : pair_(MakeSocketPair()) {}

    StopSignal(const StopSignal&) = delete;
    StopSignal& operator=(const StopSignal&) = delete;

    // Makes the signal's entry in every collection ready for good, closes the sockets of all
    // ClosedByStop, and does nothing the second time. A thread that the system may cancel has to
    // put that off meanwhile.
    void Stop() noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (isStopped_.exchange(true)) return;
        try {
            static_cast<void>(pair_.first->Send("!", 1));
        } catch (...) {
            pair_.first
                ->Close();  // the end of the connection is ready too, for an EVENT_CLOSE entry
        }
        for (VelNet::Socket* const socket : closedByStop_)
            Close(*socket);
    }

    // Returns whether Stop has been called.
    bool IsStopped() const noexcept { return isStopped_; }

    // Adds the signal to a collection, with EVENT_READ. Call on the thread that waits. The signal
    // counts as one of the 64 sockets that a selection waits for.
    //
    // Throws: what SocketCollection::Add throws
    void AddTo(VelNet::SocketCollection& collection) const {
        collection.Add(pair_.second.Get(), VelNet::EVENT_READ);
    }

private:
    friend class ClosedByStop;

    static void Close(VelNet::Socket& socket) noexcept {
        try {
            socket.Close();
        } catch (...) {
            return;  // an extended socket that is closed already
        }
    }

    void Register(VelNet::Socket& socket) {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (isStopped_) return Close(socket);
        closedByStop_.push_back(&socket);
    }

    void Forget(VelNet::Socket& socket) noexcept {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found = std::find(closedByStop_.begin(), closedByStop_.end(), &socket);
        if (found != closedByStop_.end()) closedByStop_.erase(found);
    }

    std::mutex mutex_;
    std::atomic<bool> isStopped_{false};
    std::vector<VelNet::Socket*> closedByStop_;
    SocketPair pair_;
};

// For the length of a scope, Stop closes the socket under the thread that waits in Accept, Connect,
// Receive or Send on it: the operation throws SOCKET_ERR_INTR, or SOCKET_ERR_NOTSOCK if it begins
// only then. If the signal has stopped before, the socket is closed at once. The socket and the
// signal must live longer; what closing under an operation means is said at Socket::Close.
class ClosedByStop {
public:
    // Throws std::bad_alloc.
    ClosedByStop(StopSignal& signal, VelNet::Socket& socket) : signal_(signal), socket_(socket) {
        signal_.Register(socket_);
    }
    ~ClosedByStop() { signal_.Forget(socket_); }

    ClosedByStop(const ClosedByStop&) = delete;
    ClosedByStop& operator=(const ClosedByStop&) = delete;

private:
    StopSignal& signal_;
    VelNet::Socket& socket_;
};

}  // namespace VelCompanion
