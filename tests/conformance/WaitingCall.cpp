#include "WaitingCall.h"

#include <Platform/Winsock.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include "Provocation.h"

namespace Conformance {

WaitingCall::WaitingCall(std::function<int()> call) : call_(std::move(call)) {
    thread_ = std::thread([this] {
        started_.set_value(CurrentThread());
        const int result = call_();
        ended_.set_value(result < 0 ? Winsock::WSAGetLastError() : 0);
    });
    AwaitWaiting(started_.get_future().get());
}

WaitingCall::~WaitingCall() {
    if (thread_.joinable()) Error();
}

int WaitingCall::Error() {
    std::future<int> error = ended_.get_future();
    if (error.wait_for(std::chrono::minutes(1)) != std::future_status::ready) {
        std::fputs("A call that nothing wakes is still waiting\n", stderr);
        std::abort();
    }
    thread_.join();
    return error.get();
}

}  // namespace Conformance
