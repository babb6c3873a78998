#include "Limits.h"

#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "Failure.h"

namespace VelSockCat {

namespace {

using VelCompanion::Milliseconds;

// Closes the socket when the time is over, unless it has been told before that this is not needed.
class Watch {
public:
    Watch(VelNet::Socket& socket, const VelCompanion::Deadline& deadline)
        : thread_([this, &socket, &deadline] { Run(socket, deadline); }) {}

    ~Watch() { Stop(); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    // Returns whether the socket has been closed.
    bool Stop() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        changed_.notify_one();
        if (thread_.joinable()) thread_.join();
        return hasClosed_;
    }

private:
    void Run(VelNet::Socket& socket, const VelCompanion::Deadline& deadline) {
        std::unique_lock lock(mutex_);
        if (changed_.wait_until(lock, deadline.End(), [this] { return isOver_; })) return;
        hasClosed_ = true;
        try {
            socket.Close();
        } catch (const VelNet::Exception&) {
            return;  // the attempt goes on, without a limit
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    bool isOver_ = false;
    bool hasClosed_ = false;
    std::thread thread_;
};

VelNet::Exception TimeIsOver(const VelCompanion::Deadline& deadline) {
    const std::string text =
        "not connected within " + std::to_string(deadline.Limit().count()) + " ms";
    return {VelBase::UTF8ToWideChar(text.c_str(), false).c_str(), VelNet::SOCKET_ERR_TIMEDOUT};
}

Milliseconds LimitOf(const std::optional<unsigned int>& milliseconds) {
    const bool hasLimit = milliseconds.value_or(0) != 0;
    return hasLimit ? Milliseconds(*milliseconds) : VelCompanion::NoLimit;
}

}  // namespace

ConnectLimit::ConnectLimit(const Arguments& arguments)
    : deadline_(LimitOf(arguments.connectTimeout)) {}

void ConnectLimit::Connect(VelNet::Socket& socket, const std::function<void()>& connect) const {
    if (!deadline_.HasLimit()) return connect();
    if (deadline_.IsOver()) throw TimeIsOver(deadline_);
    Watch watch(socket, deadline_);
    try {
        connect();
    } catch (const VelNet::Exception&) {
        if (watch.Stop()) throw TimeIsOver(deadline_);
        throw;
    }
    if (watch.Stop()) throw TimeIsOver(deadline_);
}

void AwaitConnection(VelNet::Socket& listener, const Arguments& arguments) {
    const Milliseconds limit = LimitOf(arguments.acceptTimeout);
    if (limit == VelCompanion::NoLimit || VelCompanion::WaitToReceive(listener, limit)) return;
    throw VelSockTools::Failure(
        VelSockTools::ExitCode::TimedOut,
        "nobody has connected within " + std::to_string(limit.count()) + " ms");
}

}  // namespace VelSockCat
