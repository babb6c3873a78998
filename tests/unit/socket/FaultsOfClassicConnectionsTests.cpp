// The classic socket's connections and transfers when a call of the system fails or answers oddly.
#include "FaultStorySockets.h"
#include "scripted/platform/Call.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Binding and listening

{"Bind", R"(
    bind(1001, 10.0.0.1:80, 16)
    holds state=bound
)"},
{"Bind", R"(
    bind(1001, 10.0.0.1:80, 16)       fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80, errno = {n}
)"},
{"Listen", R"(
    listen(1001, 2)
    returns 0
    holds state=listening
)"},
{"Listen", R"(
    listen(1001, 2)                   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket, errno = {n}
)"},

// Connecting: the connection is made before the addresses are asked for, and stays made.

{"Connect", R"(
    connect(1001, 10.0.0.1:80, 16)
    getsockname(1001, 16)             -> 10.3.3.3:40000
    getpeername(1001, 16)             -> 10.4.4.4:81
    log Connection Trace: Connected, Local address: 10.3.3.3 (40000), Remote address: 10.4.4.4 (81)
    holds state=connected local=10.3.3.3:40000 remote=10.4.4.4:81
)"},
{"Connect", R"(
    connect(1001, 10.0.0.1:80, 16)
    getsockname(1001, 16)             -> raw 02009C400A030303
    getpeername(1001, 16)             -> raw 020000510A040404000000000000000011223344
    log Connection Trace: Connected, Local address: 10.3.3.3 (40000), Remote address: 10.4.4.4 (81)
    holds state=connected local=10.3.3.3:40000 remote=10.4.4.4:81
)"},
{"Connect", R"(
    connect(1001, 10.0.0.1:80, 16)    fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 10.0.0.1:80, errno = {n}
)"},
{"Connect", R"(
    connect(1001, 10.0.0.1:80, 16)
    getsockname(1001, 16)             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed, errno = {n}
    holds state=connected
)"},
{"Connect", R"(
    connect(1001, 10.0.0.1:80, 16)
    getsockname(1001, 16)             -> 10.3.3.3:40000
    getpeername(1001, 16)             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed, errno = {n}
    holds state=connected local=10.3.3.3:40000
)"},

// Accepting: the new socket has the listener's own local address. When that cannot be told the new
// socket is closed, with a record of its own.

{"Accept", R"(
    accept(1001, 16)                  -> 2001 10.5.5.5:4711
    getsockname(1001, 16)             -> 0.0.0.0:80
    log Connection Trace: Connected, Local address: 0.0.0.0 (80), Remote address: 10.5.5.5 (4711)
    returns 2001/connected/0.0.0.0:80/10.5.5.5:4711
    holds argument=10.5.5.5:4711
    opens socket 2001
)"},
{"Accept", R"(
    accept(1001, 16)                  -> 0 raw 020012670A050505
    getsockname(1001, 16)             -> raw 020000500A010203
    log Connection Trace: Connected, Local address: 10.1.2.3 (80), Remote address: 10.5.5.5 (4711)
    returns 0/connected/10.1.2.3:80/10.5.5.5:4711
    holds argument=10.5.5.5:4711
    opens socket 0
)"},
{"Accept", R"(
    accept(1001, 16)                  -> 2001 raw 170012670A0505050000000000000000AABBCCDDEEFF00112233
    getsockname(1001, 16)             -> 10.1.2.3:80
    log Connection Trace: Connected, Local address: 10.1.2.3 (80), Remote address: 10.5.5.5 (4711)
    returns 2001/connected/10.1.2.3:80/10.5.5.5:4711
    holds argument=10.5.5.5:4711
    opens socket 2001
)"},
{"Accept", R"(
    accept(1001, 16)                  fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection, errno = {n}
    numbers except 10035 11
)"},
{"Accept", R"(
    accept(1001, 16)                  fails
    WSAGetLastError()
    returns nothing
    numbers only 10035 11
)"},
{"Accept", R"(
    accept(1001, 16)                  -> 2001 10.5.5.5:4711
    getsockname(1001, 16)             fails
    WSAGetLastError()
    log Error
    closesocket(2001)
    log Connection Trace: Disconnected, Local address: 0.0.0.0 (0), Remote address: 0.0.0.0 (0)
    throws VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed, errno = {n}
    holds argument=10.5.5.5:4711
)"},
{"Accept", R"(
    accept(1001, 16)                  -> 2001 10.5.5.5:4711
    getsockname(1001, 16)             fails 10022
    WSAGetLastError()
    log Error
    closesocket(2001)                 fails
    WSAGetLastError()
    log Error: VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, errno = {n}
    log Connection Trace: Disconnected, Local address: 0.0.0.0 (0), Remote address: 0.0.0.0 (0)
    throws VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed, errno = {10022}
    holds argument=10.5.5.5:4711
)"},

// Sending

{"Send", R"(
    send(1001, "abcd", 4, 0)
    log Packet Trace: Sent 4 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Sent 4 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: 61626364
    returns 4
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)          -> 1
    log Packet Trace: Sent 1 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Sent 1 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: 61
    returns 1
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)          -> 0
    log Packet Trace: Sent 0 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Sent 0 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: {none}
    returns 0
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)          fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::send failed, errno = {n}
    numbers except 10035
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)          fails
    WSAGetLastError()
    returns 0
    numbers only 10035
)"},
{"Send nothing", R"(
    send(1001, "", 0, 0)
    log Packet Trace: Sent 0 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Sent 0 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: {none}
    returns 0
)"},
{"Send nothing", R"(
    send(1001, "", 0, 0)              fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Send() - FAIL. The ::send failed, errno = {n}
    numbers except 10035
)"},
{"Send nothing", R"(
    send(1001, "", 0, 0)              fails
    WSAGetLastError()
    returns 0
    numbers only 10035
)"},

// Receiving

{"Receive", R"(
    recv(1001, 8, 0)                  -> bytes 41007F80C3FF
    log Packet Trace: Received 6 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Received 6 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: 41007FFFFFFF80FFFFFFC3FFFFFFFF
    returns 6
    holds buffer=41007F80C3FF2E2E
)"},
{"Receive", R"(
    recv(1001, 8, 0)                  -> "abcdefgh"
    log Packet Trace: Received 8 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)
    log Verbose Packet Trace: Received 8 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80), data: 6162636465666768
    returns 8
    holds buffer=6162636465666768
)"},
{"Receive", R"(
    recv(1001, 8, 0)                  -> 0
    log Error
    throws VelNet::SocketImpl::Receive() - FAIL. The ::recv could not be completed because the connection has been closed.
)"},
{"Receive", R"(
    recv(1001, 8, 0)                  fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketImpl::Receive() - FAIL. The ::recv failed, errno = {n}
)"},
};
// clang-format on

// What it accepts stays until the trial's end.
Trial Accepting() {
    struct Scene {
        VelBase::ReturnPtrI<SocketImpl> listener = AddressedSocket(STATE_LISTENING);
        SocketAddress argument;
        VelBase::ReturnPtrI<Socket> accepted;
    };
    const auto scene = std::make_shared<Scene>();
    return {.act =
                [=] {
                    scene->accepted = scene->listener->Accept(scene->argument);
                    return scene->accepted ? SummaryOf(*scene->accepted) : "nothing";
                },
            .state =
                [=] {
                    Properties properties = PropertiesOf(*scene->listener);
                    properties["argument"] = EndpointText(scene->argument);
                    return properties;
                }};
}

Trial Receiving() {
    const auto socket = std::make_shared<VelBase::ReturnPtrI<SocketImpl>>(AddressedSocket());
    const auto buffer = std::make_shared<std::string>("........");
    return {.act = [=] { return std::to_string((*socket)->Receive(buffer->data(), 8)); },
            .state =
                [=] {
                    Properties properties = PropertiesOf(**socket);
                    properties["buffer"] = HexBytes(buffer->data(), 8).substr(2);
                    return properties;
                }};
}

const FaultTable Table = {
    {
        {"Bind",
         OnClassic([](auto& socket) { socket.Bind(Octets(10, 0, 0, 1), 80); }, STATE_CREATED)},
        {"Listen", OnClassic([](auto& socket) { return socket.Listen(); }, STATE_CREATED)},
        {"Connect",
         OnClassic([](auto& socket) { socket.Connect(Octets(10, 0, 0, 1), 80); }, STATE_CREATED)},
        {"Accept", Accepting},
        {"Send", OnClassic([](auto& socket) { return socket.Send("abcd", 4); })},
        {"Send nothing", OnClassic([](auto& socket) { return socket.Send("", 0); })},
        {"Receive", Receiving},
    },
    Stories};

class FaultsOfClassicConnections : public SocketTest {};

TEST_F(FaultsOfClassicConnections, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfClassicConnections, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfClassicConnections, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
