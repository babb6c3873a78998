#include "Serving.h"

#include <chrono>
#include <exception>
#include <future>
#include <list>
#include <mutex>
#include <utility>

#include "Events.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;
using VelSockTools::Failure;

[[noreturn]] void ThrowNobodyConnected(const Arguments& arguments) {
    throw Failure(ExitCode::TimedOut, "nobody has connected within " +
                                          std::to_string(*arguments.acceptTimeout) + " ms");
}

ExitCode CodeOfFailure() {
    try {
        throw;
    } catch (const Failure& failure) {
        return Report("velsock-cat", failure);
    } catch (const VelNet::Exception& exception) {
        return Report("velsock-cat",
                      Failure(ExitCode::ConnectionLost, "cannot serve a connection", exception));
    } catch (const std::exception& exception) {
        return Report("velsock-cat", Failure(ExitCode::LocalFailure, exception.what()));
    }
}

// Serves connections in threads of their own and waits for them at its end.
class Threads {
public:
    Threads(Serve serve, const Arguments& arguments) : serve_(serve), arguments_(arguments) {}

    void Start(Accepted peer, int number) {
        AwaitRoom();
        const auto work = [this, number](Accepted served) { ServeOne(served, number); };
        running_.push_back(std::async(std::launch::async, work, std::move(peer)));
    }

    // In the calling thread.
    void ServeOne(Accepted& peer, int number) {
        try {
            Traffic traffic(arguments_, number);
            serve_(peer, traffic, arguments_);
        } catch (...) {
            Keep(CodeOfFailure());
        }
    }

    ExitCode Outcome() {
        running_.clear();
        return outcome_;
    }

private:
    // Fewer than a process may usually have descriptors, of which a relay needs two for each.
    static constexpr std::size_t Most = 400;

    void AwaitRoom() {
        do {
            running_.remove_if([](const std::future<void>& each) {
                return each.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
            });
            if (running_.size() == Most) running_.front().wait_for(std::chrono::milliseconds(50));
        } while (running_.size() == Most);
    }

    void Keep(ExitCode code) {
        const std::lock_guard lock(mutex_);
        if (outcome_ == ExitCode::InOrder) outcome_ = code;
    }

    const Serve serve_;
    const Arguments& arguments_;
    std::mutex mutex_;
    ExitCode outcome_ = ExitCode::InOrder;
    std::list<std::future<void>> running_;  // ends first
};

// The listening socket is closed before the connection is served.
ExitCode ServeFirst(std::unique_ptr<Listener> listener, const Arguments& arguments, Serve serve) {
    auto peer = listener->Accept(arguments);
    if (!peer) ThrowNobodyConnected(arguments);
    listener.reset();
    Traffic traffic(arguments);
    serve(*peer, traffic, arguments);
    return ExitCode::InOrder;
}

ExitCode ServeEach(Listener& listener, const Arguments& arguments, Crowd crowd, Serve serve) {
    Threads threads(serve, arguments);
    for (int number = 1;; ++number) {
        auto peer = listener.Accept(arguments);
        if (!peer && number == 1) ThrowNobodyConnected(arguments);
        if (!peer) return threads.Outcome();
        if (crowd == Crowd::OneByOne) {
            threads.ServeOne(*peer, number);
        } else {
            threads.Start(std::move(*peer), number);
        }
    }
}

}  // namespace

ExitCode ServeConnections(const Arguments& arguments, Crowd crowd, Serve serve) {
    auto listener = OpenListener(arguments);
    if (!arguments.keepsAccepting) return ServeFirst(std::move(listener), arguments, serve);
    return ServeEach(*listener, arguments, crowd, serve);
}

}  // namespace VelSockCat
