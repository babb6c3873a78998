// The sockets of fault stories, with the handle 1001 where it is open.
#pragma once

#include <memory>
#include <type_traits>

#include "FaultStory.h"
#include "XtFixture.h"

namespace SocketTests {

// Opens the handle in the system's books.
Winsock::Handle OpenedHandle(Winsock::Handle handle = 1001);

// handle, state, local and remote of a classic socket; local and remote of an extended one are its
// host and port.
Properties PropertiesOf(const SocketImpl& socket);
Properties PropertiesOf(const SocketXtImpl& socket);

// In one word: "2001/connected/10.1.2.3:50123/10.1.2.9:80".
std::string SummaryOf(const Properties& properties);
std::string SummaryOf(const Socket& socket);

// A socket with the addresses of SocketFixture.h, or the texts of XtFixture.h.
VelBase::ReturnPtrI<SocketImpl> AddressedSocket(SocketState state = STATE_CONNECTED);
VelBase::ReturnPtrI<SocketXtImpl> AddressedXt(SocketState state = STATE_CONNECTED,
                                              int type = Winsock::TypeStream,
                                              SocketXt::ADDR_FAMILY family = SocketXt::FAMILY_IPV4);

// The result of an operation in words.
template <class Operation, class Implementation>
std::string ResultOf(const Operation& operation, Implementation& socket) {
    using Result = std::invoke_result_t<Operation, Implementation&>;
    if constexpr (std::is_void_v<Result>) {
        operation(socket);
        return "";
    } else if constexpr (std::is_same_v<Result, bool>) {
        return operation(socket) ? "yes" : "no";
    } else if constexpr (std::is_arithmetic_v<Result>) {
        return std::to_string(operation(socket));
    } else {
        return operation(socket);
    }
}

// An operation on the socket, whose properties are the state.
template <class Implementation, class Operation>
Trial TrialOn(VelBase::ReturnPtrI<Implementation> socket, Operation operation) {
    const auto held = std::make_shared<VelBase::ReturnPtrI<Implementation>>(std::move(socket));
    return {.act = [=] { return ResultOf(operation, **held); },
            .state = [=] { return PropertiesOf(**held); }};
}

template <class Operation>
std::function<Trial()> OnClassic(Operation operation, SocketState state = STATE_CONNECTED) {
    return [=] { return TrialOn(AddressedSocket(state), operation); };
}

template <class Operation>
std::function<Trial()> OnXt(Operation operation, SocketState state = STATE_CONNECTED,
                            int type = Winsock::TypeStream,
                            SocketXt::ADDR_FAMILY family = SocketXt::FAMILY_IPV4) {
    return [=] { return TrialOn(AddressedXt(state, type, family), operation); };
}

// The end of the last reference. Nothing is left to tell a state.
template <class Implementation>
Trial ReleaseOf(VelBase::ReturnPtrI<Implementation> socket) {
    const auto last = std::make_shared<VelBase::ReturnPtrI<Implementation>>(std::move(socket));
    return {.act = [=] {
        *last = {};
        return "";
    }};
}

}  // namespace SocketTests
