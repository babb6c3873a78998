// A call that waits in a thread of its own while the test goes on.
#pragma once

#include <support/Threads.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <thread>
#include <utility>

namespace Support {

template <class Outcome>
class WaitingCall {
public:
    // The constructor returns when the call waits.
    explicit WaitingCall(std::function<Outcome()> call) : call_(std::move(call)) {
        thread_ = std::thread([this] {
            started_.set_value(CurrentThread());
            outcome_.set_value(call_());
        });
        AwaitWaiting(started_.get_future().get());
    }
    ~WaitingCall() {
        if (thread_.joinable()) Finish();
    }
    WaitingCall(const WaitingCall&) = delete;
    WaitingCall& operator=(const WaitingCall&) = delete;

    // Waits for the call's end. A call that nothing wakes ends the whole program, since its thread
    // cannot be ended.
    Outcome Finish() {
        std::future<Outcome> outcome = outcome_.get_future();
        if (outcome.wait_for(std::chrono::minutes(1)) != std::future_status::ready) {
            std::fputs("A call that nothing wakes is still waiting\n", stderr);
            std::abort();
        }
        thread_.join();
        return outcome.get();
    }

private:
    std::promise<unsigned long> started_;
    std::promise<Outcome> outcome_;
    std::function<Outcome()> call_;
    std::thread thread_;
};

}  // namespace Support
