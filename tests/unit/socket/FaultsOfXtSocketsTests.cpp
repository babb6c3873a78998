// The extended socket's acceptance, options and end when a call of the system fails or
// answers oddly.
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Accepting: the new socket has no texts. What the variable held before is released.

{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    WSACleanup()
    returns 2001/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 2001
)"},
{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 0 raw 02
    getnameinfo(0.0.0.0:0, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    WSACleanup()
    returns 0/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 0
)"},
{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Accept , cannot accept on local socket from remote address , ::accept , here.example : 4000 , errno = {n}
)"},
{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    tells VelNet::SocketXtImpl::Accept , cannot get remote host name and port , ::getnameinfo , no-ip : no-port , errno = {n}
    returns 2001/connected/:/:/1/6/1
    opens socket 2001
)"},
{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   fails returning -1
    WSAGetLastError()
    log Error
    WSACleanup()
    tells VelNet::SocketXtImpl::Accept , cannot get remote host name and port , ::getnameinfo , no-ip : no-port , errno = {n}
    returns 2001/connected/:/:/1/6/1
    opens socket 2001
)"},
{"Accept", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Accept ::WSAStartup failed
    numbers except 0
)"},
{"Accept", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    WSACleanup()                                fails
    returns 2001/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 2001
)"},

{"Accept in place of another", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    closesocket(1500)
    log Connection Trace: Disconnected, Local address:  (), Remote address:  ()
    WSACleanup()
    returns 2001/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 2001
    closes socket 1500
)"},
{"Accept in place of another", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Accept , cannot accept on local socket from remote address , ::accept , here.example : 4000 , errno = {n}
)"},
{"Accept in place of another", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   fails
    WSAGetLastError()
    log Error
    closesocket(1500)
    log Connection Trace: Disconnected, Local address:  (), Remote address:  ()
    WSACleanup()
    tells VelNet::SocketXtImpl::Accept , cannot get remote host name and port , ::getnameinfo , no-ip : no-port , errno = {n}
    returns 2001/connected/:/:/1/6/1
    opens socket 2001
    closes socket 1500
)"},
{"Accept in place of another", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    closesocket(1500)                           fails
    WSAGetLastError()
    log Error
    WSACleanup()
    tells VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo ,  , errno = {n}
    returns 2001/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 2001
    closes socket 1500
)"},
{"Accept in place of another", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Accept ::WSAStartup failed
    numbers except 0
)"},
{"Accept in place of another", R"(
    WSAStartup(0x0101)
    accept(1001, 128)                           -> 2001 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Connection Trace: Connected, Local address: here.example (4000), Remote address: peer (99)
    closesocket(1500)
    log Connection Trace: Disconnected, Local address:  (), Remote address:  ()
    WSACleanup()                                fails
    returns 2001/connected/:/:/1/6/1
    holds host=peer port=99 remote=peer:99
    opens socket 2001
    closes socket 1500
)"},

// Options: only -1 is a failure.

{"SetReceiveTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1006, -1, 4)
)"},
{"SetReceiveTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1006, -1, 4)     -> 1
)"},
{"SetReceiveTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1006, -1, 4)     fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetReceiveTimeout , cannot set recv timeout , ::setsockopt , here.example : 4000 , errno = {n}
)"},
{"SetSendTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1005, 5000, 4)
)"},
{"SetSendTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1005, 5000, 4)   -> -2
)"},
{"SetSendTimeout", R"(
    setsockopt(1001, 0xFFFF, 0x1005, 5000, 4)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetSendTimeout , cannot set send timeout , ::setsockopt , here.example : 4000 , errno = {n}
)"},
{"SetReuseAddress", R"(
    setsockopt(1001, 0xFFFF, 0x4, 1, 4)
)"},
{"SetReuseAddress", R"(
    setsockopt(1001, 0xFFFF, 0x4, 1, 4)         -> 1
)"},
{"SetReuseAddress", R"(
    setsockopt(1001, 0xFFFF, 0x4, 1, 4)         fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::SetReuseAddress , cannot set reuse address , ::setsockopt , here.example : 4000 , errno = {n}
)"},
{"SetNonBlocking", R"(
    ioctlsocket(1001, 0x8004667E, 1)
    returns yes
)"},
{"SetNonBlocking", R"(
    ioctlsocket(1001, 0x8004667E, 1)            fails
    returns no
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)               -> 1
    returns yes
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)               -> 0
    returns no
)"},
{"IsDataAvailable", R"(
    ioctlsocket(1001, 0x4004667F)               fails
    returns no
)"},
{"GetStatus", R"(
    ioctlsocket(1001, 0x4004667F)               -> 1
    returns 2
)"},
{"GetStatus", R"(
    ioctlsocket(1001, 0x4004667F)               fails
    returns 3
)"},

// Closing: a failure leaves the socket as it was. The end of the last reference cannot throw.

{"Close", R"(
    closesocket(1001)
    log Connection Trace: Disconnected, Local address: here.example (4000), Remote address: there.example (http)
    holds handle=none state=closed
    closes socket 1001
)"},
{"Close", R"(
    closesocket(1001)                           fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo , here.example : 4000 , errno = {n}
    closes socket 1001
)"},
{"Close again", R"(
    closesocket(INVALID)                        -> 0
    log Connection Trace: Disconnected, Local address:  (), Remote address:  ()
)"},
{"Close again", R"(
    closesocket(INVALID)                        fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo ,  , errno = {n}
)"},
{"release the last reference", R"(
    closesocket(1001)
    log Connection Trace: Disconnected, Local address: here.example (4000), Remote address: there.example (http)
    closes socket 1001
)"},
{"release the last reference", R"(
    closesocket(1001)                           fails
    WSAGetLastError()
    log Error
    tells VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo , here.example : 4000 , errno = {n}
    closes socket 1001
)"},
{"the operations by Octets", R"(
    returns 0.0.0.0:0 0.0.0.0:0
)"},
};
// clang-format on

VelBase::ReturnPtrI<SocketXtImpl> ClosedXt() {
    return {new SocketXtImpl(Winsock::InvalidSocket, STATE_CLOSED, Winsock::TypeStream,
                             Winsock::ProtocolTcp, SocketXt::FAMILY_IPV4)};
}

struct AcceptScene {
    VelBase::ReturnPtrI<SocketXtImpl> listener = AddressedXt(STATE_LISTENING);
    VelBase::ReturnPtrI<SocketXt> accepted;
    VelBase::ReturnString host = "earlier-host", port = "earlier-port";
};

std::function<Trial()> AcceptingInto(std::shared_ptr<AcceptScene> (*makeScene)()) {
    return [=] {
        const auto scene = makeScene();
        return Trial{.act =
                         [=] {
                             scene->listener->Accept(scene->accepted, scene->host, scene->port);
                             return SummaryOf(*scene->accepted);
                         },
                     .state =
                         [=] {
                             Properties properties = PropertiesOf(*scene->listener);
                             properties["host"] = scene->host.c_str();
                             properties["port"] = scene->port.c_str();
                             return properties;
                         }};
    };
}

std::shared_ptr<AcceptScene> EmptyVariable() {
    return std::make_shared<AcceptScene>();
}

std::shared_ptr<AcceptScene> VariableInUse() {
    const auto scene = std::make_shared<AcceptScene>();
    scene->accepted = VelBase::ReturnPtrI<SocketXt>(
        new SocketXtImpl(OpenedHandle(1500), STATE_CONNECTED, Winsock::TypeStream,
                         Winsock::ProtocolTcp, SocketXt::FAMILY_IPV4));
    return scene;
}

// Through the classic socket's face, which has them without a warning.
std::string UseOctets(SocketXtImpl& xt) {
    Socket& socket = xt;
    SocketAddress untouched(Octets(10, 0, 0, 7), 7);
    socket.Bind(Octets(10, 0, 0, 1), 80);
    socket.Connect(Octets(10, 0, 0, 1), 80);
    EXPECT_FALSE(socket.Accept(untouched));
    EXPECT_EQ(EndpointText(untouched), "10.0.0.7:7");
    return EndpointText(socket.GetLocalAddress()) + ' ' + EndpointText(socket.GetRemoteAddress());
}

const FaultTable Table = {
    {
        {"Accept", AcceptingInto(EmptyVariable)},
        {"Accept in place of another", AcceptingInto(VariableInUse)},
        {"SetReceiveTimeout", OnXt([](auto& socket) { socket.SetReceiveTimeout(0xFFFFFFFF); })},
        {"SetSendTimeout", OnXt([](auto& socket) { socket.SetSendTimeout(5000); })},
        {"SetReuseAddress", OnXt([](auto& socket) { socket.SetReuseAddress(); })},
        {"SetNonBlocking", OnXt([](auto& socket) { return socket.SetNonBlocking(); })},
        {"IsDataAvailable", OnXt([](auto& socket) { return socket.IsDataAvailable(); })},
        {"GetStatus", OnXt([](auto& socket) { return socket.GetStatus(); })},
        {"Close", OnXt([](auto& socket) { socket.Close(); })},
        {"Close again", [] { return TrialOn(ClosedXt(), [](auto& socket) { socket.Close(); }); }},
        {"release the last reference", [] { return ReleaseOf(AddressedXt()); }},
        {"the operations by Octets", OnXt(UseOctets)},
    },
    Stories,
    true};

class FaultsOfXtSockets : public XtTest {};

TEST_F(FaultsOfXtSockets, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfXtSockets, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfXtSockets, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
