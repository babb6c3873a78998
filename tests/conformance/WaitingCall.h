// A call that waits in a thread of its own while the test goes on.
#pragma once

#include <functional>
#include <future>
#include <thread>

namespace Conformance {

class WaitingCall {
public:
    // The call returns what Winsock's calls return. The constructor returns when it waits.
    explicit WaitingCall(std::function<int()> call);
    ~WaitingCall();
    WaitingCall(const WaitingCall&) = delete;
    WaitingCall& operator=(const WaitingCall&) = delete;

    // Waits for the call's end: its error, or 0 when it succeeded. A call that nothing wakes ends
    // the whole program, since its thread cannot be ended.
    int Error();

private:
    std::promise<unsigned long> started_;
    std::promise<int> ended_;
    std::function<int()> call_;
    std::thread thread_;
};

}  // namespace Conformance
