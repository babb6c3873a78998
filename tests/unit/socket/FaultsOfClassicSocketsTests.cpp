// The classic socket when a call of the system fails or answers oddly.
#include <VelNet/Socket.h>

#include "CollectionFixture.h"
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Creation

{"create a stream", R"(
    socket(2, 1, 6)                   -> 1002
    returns 1002/created/0.0.0.0:0/0.0.0.0:0
    opens socket 1002
)"},
{"create a stream", R"(
    socket(2, 1, 6)                   -> 0
    returns 0/created/0.0.0.0:0/0.0.0.0:0
    opens socket 0
)"},
{"create a stream", R"(
    socket(2, 1, 6)                   fails
    WSAGetLastError()
    log Error
    throws VelNet::CreateSocket() - FAIL. The ::socket failed, errno = {n}
)"},
{"create a datagram socket", R"(
    socket(2, 2, 17)                  -> 1002
    returns 1002/created/0.0.0.0:0/0.0.0.0:0
    opens socket 1002
)"},
{"create a datagram socket", R"(
    socket(2, 2, 17)                  fails
    WSAGetLastError()
    log Error
    throws VelNet::CreateSocket() - FAIL. The ::socket failed, errno = {n}
)"},
{"create what has no name", R"(
    socket(2, 0, 0)                   -> 1002
    returns 1002/created/0.0.0.0:0/0.0.0.0:0
    opens socket 1002
)"},
{"create what has no name", R"(
    socket(2, 0, 0)                   fails
    WSAGetLastError()
    log Error
    throws VelNet::CreateSocket() - FAIL. The ::socket failed, errno = {n}
)"},

// Options

{"SetNonBlocking", R"(
    ioctlsocket(1001, 0x8004667E, 1)
    returns yes
)"},
{"SetNonBlocking", R"(
    ioctlsocket(1001, 0x8004667E, 1)  fails
    returns no
)"},
{"SetReceiveTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1006, 5000, 4)
)"},
{"SetReceiveTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1006, 5000, 4)   fails
    WSAGetLastError()
    log Error
    tells VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Receive Timeout, errno = {n}
)"},
{"SetSendTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1005, 0, 4)
)"},
{"SetSendTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1005, 0, 4)      fails
    WSAGetLastError()
    log Error
    tells VelNet::SocketImpl::SetReceiveTimeout() - FAIL. Cannot set Send Timeout, errno = {n}
)"},
{"SetReuseAddress", R"(
    setsockopt(1001, 0xFFFF, 0x4, 1, 4)
)"},
{"SetReuseAddress", R"(
    setsockopt(1001, 0xFFFF, 0x4, 1, 4)         fails
    WSAGetLastError()
    log Error
    tells VelNet::SocketImpl::SetReuseAddress() - FAIL. Cannot set Reuse Address, errno = {n}
)"},

// Closing

{"Close", R"(
    closesocket(1001)
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    holds handle=none state=closed local=0.0.0.0:0 remote=0.0.0.0:0
    closes socket 1001
)"},
{"Close", R"(
    closesocket(1001)                 fails
    WSAGetLastError()
    log Error
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    tells VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, errno = {n}
    holds handle=none state=closed local=0.0.0.0:0 remote=0.0.0.0:0
    closes socket 1001
)"},
{"Close again", R"(
    closesocket(INVALID)              -> 0
    log Connection Trace: Disconnected, Local address: 0.0.0.0 (0), Remote address: 0.0.0.0 (0)
)"},
{"Close again", R"(
    closesocket(INVALID)              fails
    WSAGetLastError()
    log Error
    log Connection Trace: Disconnected, Local address: 0.0.0.0 (0), Remote address: 0.0.0.0 (0)
    tells VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, errno = {n}
)"},
{"release the last reference", R"(
    closesocket(1001)
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    closes socket 1001
)"},
{"release the last reference", R"(
    closesocket(1001)                 fails
    WSAGetLastError()
    log Error
    log Connection Trace: Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    tells VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, errno = {n}
    closes socket 1001
)"},
{"release a closed socket", R"(
)"},
{"release a handle marked as closed", R"(
)"},

// Questions

{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)     -> 5
    returns yes
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)     -> 4294967295
    returns yes
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)     -> 0
    returns no
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)     fails
    returns no
)"},
{"GetStatus of a connected socket", R"(
    ioctlsocket(1001, 0x4004667F)     -> 1
    returns 2
)"},
{"GetStatus of a connected socket", R"(
    ioctlsocket(1001, 0x4004667F)     -> 0
    returns 3
)"},
{"GetStatus of a connected socket", R"(
    ioctlsocket(1001, 0x4004667F)     fails
    returns 3
)"},
{"GetStatus of a listener", R"(
    returns 1
)"},
{"GetStatus of a bound socket", R"(
    returns 0
)"},
{"GetStatus of a created socket", R"(
    returns 0
)"},
{"GetStatus of a closed socket", R"(
    returns 0
)"},
{"IsValid, IsSameSocket", R"(
    returns valid same another invalid
)"},
{"GetLocalAddress", R"(
    getsockname(1001, 16)             -> 10.9.8.7:65535
    returns 10.9.8.7:65535
)"},
{"GetLocalAddress", R"(
    getsockname(1001, 16)             -> raw 02001F900A090807
    returns 10.9.8.7:8080
)"},
{"GetLocalAddress", R"(
    getsockname(1001, 16)             -> raw 17001F900A0908070000000000000000DDDDDDDDDDDDDDDDDDDDDDDD
    returns 10.9.8.7:8080
)"},
{"GetLocalAddress", R"(
    getsockname(1001, 16)             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed, errno = {n}
)"},
{"GetRemoteAddress", R"(
    getpeername(1001, 16)             -> 10.9.8.7:1
    returns 10.9.8.7:1
)"},
{"GetRemoteAddress", R"(
    getpeername(1001, 16)             -> raw 02001F900A090807
    returns 10.9.8.7:8080
)"},
{"GetRemoteAddress", R"(
    getpeername(1001, 16)             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed, errno = {n}
)"},
};
// clang-format on

std::function<Trial()> Creation(int type, int protocol) {
    return [=] {
        const auto made = std::make_shared<VelBase::ReturnPtrI<Socket>>();
        return Trial{.act = [=] {
            *made = CreateSocket(static_cast<Socket::SOCKET_TYPE>(type),
                                 static_cast<Socket::SOCKET_PROTOCOL>(protocol));
            return SummaryOf(**made);
        }};
    };
}

int StatusOf(const SocketImpl& socket) {
    return socket.GetStatus();
}

VelBase::ReturnPtrI<SocketImpl> ClosedSocket() {
    return {new SocketImpl};
}

std::string SamenessOf(const SocketImpl& socket) {
    const VelBase::ReturnPtrI<SocketImpl> other(new SocketImpl);
    return std::string(socket.IsValid() ? "valid" : "invalid") +
           (socket.IsSameSocket(socket) ? " same" : "") +
           (socket.IsSameSocket(*other) ? " same" : " another") +
           (other->IsValid() ? " valid" : " invalid");
}

const FaultTable Table = {
    {
        {"create a stream", Creation(0, 0)},
        {"create a datagram socket", Creation(1, 1)},
        {"create what has no name", Creation(2, -1)},
        {"SetNonBlocking", OnClassic([](auto& socket) { return socket.SetNonBlocking(); })},
        {"SetReceiveTimeout", OnClassic([](auto& socket) { socket.SetReceiveTimeout(5000); })},
        {"SetSendTimeout", OnClassic([](auto& socket) { socket.SetSendTimeout(0); })},
        {"SetReuseAddress", OnClassic([](auto& socket) { socket.SetReuseAddress(); })},
        {"Close", OnClassic([](auto& socket) { socket.Close(); })},
        {"Close again",
         [] { return TrialOn(ClosedSocket(), [](auto& socket) { socket.Close(); }); }},
        {"release the last reference", [] { return ReleaseOf(AddressedSocket()); }},
        {"release a closed socket", [] { return ReleaseOf(ClosedSocket()); }},
        {"release a handle marked as closed", [] { return ReleaseOf(Twin(7)); }},
        {"IsDataAvailable", OnClassic([](auto& socket) { return socket.IsDataAvailable(); })},
        {"GetStatus of a connected socket", OnClassic(StatusOf)},
        {"GetStatus of a listener", OnClassic(StatusOf, STATE_LISTENING)},
        {"GetStatus of a bound socket", OnClassic(StatusOf, STATE_BOUND)},
        {"GetStatus of a created socket", OnClassic(StatusOf, STATE_CREATED)},
        {"GetStatus of a closed socket", [] { return TrialOn(ClosedSocket(), StatusOf); }},
        {"IsValid, IsSameSocket", OnClassic(SamenessOf)},
        {"GetLocalAddress", OnClassic([](auto& s) { return EndpointText(s.GetLocalAddress()); })},
        {"GetRemoteAddress", OnClassic([](auto& s) { return EndpointText(s.GetRemoteAddress()); })},
    },
    Stories};

class FaultsOfClassicSockets : public SocketTest {};

TEST_F(FaultsOfClassicSockets, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfClassicSockets, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfClassicSockets, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
