// The extended socket's transfers when a call of the system fails or answers oddly.
#include "FaultStorySockets.h"
#include "scripted/platform/Call.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Streams

{"Send", R"(
    send(1001, "abcd", 4, 0)
    log Packet Trace: Sent 4 bytes, Local address: here.example (4000), Remote address: there.example (http)
    log Verbose Packet Trace: Sent 4 bytes, Local address: here.example (4000), Remote address: there.example (http), data: 61626364
    returns 4
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)                    -> 2
    log Packet Trace: Sent 2 bytes, Local address: here.example (4000), Remote address: there.example (http)
    log Verbose Packet Trace: Sent 2 bytes, Local address: here.example (4000), Remote address: there.example (http), data: 6162
    returns 2
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)                    -> 0
    log Packet Trace: Sent 0 bytes, Local address: here.example (4000), Remote address: there.example (http)
    log Verbose Packet Trace: Sent 0 bytes, Local address: here.example (4000), Remote address: there.example (http), data: {none}
    returns 0
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)                    fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Send , send on socket failed , ::send , here.example:4000 : there.example:http , errno = {n}
    numbers except 10035
)"},
{"Send", R"(
    send(1001, "abcd", 4, 0)                    fails
    WSAGetLastError()
    returns 0
    numbers only 10035
)"},
{"Receive", R"(
    recv(1001, 8, 0)                            -> bytes 617FC3
    log Packet Trace: Received 3 bytes, Local address: here.example (4000), Remote address: there.example (http)
    log Verbose Packet Trace: Received 3 bytes, Local address: here.example (4000), Remote address: there.example (http), data: 617FFFFFFFC3
    returns 3
    holds buffer=617FC32E2E2E2E2E
)"},
{"Receive", R"(
    recv(1001, 8, 0)                            -> 0
    log Error
    throws VelNet::SocketXtImpl::Receive , ::recv could not be completed because the connection has been closed , ::recv , here.example: : 4000 , errno = {-1}
)"},
{"Receive", R"(
    recv(1001, 8, 0)                            fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Receive , recieve on socket failed , ::recv , here.example:4000 : there.example:http , errno = {n}
)"},

// Datagrams to a host: to the first of its addresses that takes it.

{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> 10.0.0.1:80 10.0.0.2:80
    sendto(1001, "abcd", 4, 0, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    ComputerName()                              when Packet Trace or Verbose Packet Trace
    log Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80)
    log Verbose Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80), data: 61626364
    WSACleanup()
    returns 4
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> [2001:DB8::1]:80 10.0.0.2:80
    sendto(1001, "abcd", 4, 0, [2001:DB8:0:0:0:0:0:1]:80, 28)   fails
    sendto(1001, "abcd", 4, 0, 10.0.0.2:80, 16)   -> 3
    freeaddrinfo(1)
    ComputerName()                              -> ME   when Packet Trace or Verbose Packet Trace
    log Packet Trace: Sendto 3 bytes, Local address: ME (Random Port), Remote address: host (80)
    log Verbose Packet Trace: Sendto 3 bytes, Local address: ME (Random Port), Remote address: host (80), data: 616263
    WSACleanup()
    returns 3
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> 10.0.0.1:80 10.0.0.2:80
    sendto(1001, "abcd", 4, 0, 10.0.0.1:80, 16)   -> 0
    freeaddrinfo(1)
    ComputerName()                              when Packet Trace or Verbose Packet Trace
    log Packet Trace: Sendto 0 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80)
    log Verbose Packet Trace: Sendto 0 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80), data: {none}
    WSACleanup()
    returns 0
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> 10.0.0.1:80 10.0.0.2:80
    sendto(1001, "abcd", 4, 0, 10.0.0.1:80, 16)   fails 10035
    sendto(1001, "abcd", 4, 0, 10.0.0.2:80, 16)   fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::sendto , host : 80 , errno = {n}
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> nothing
    freeaddrinfo(null)
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::sendto , host : 80 , errno = {left}
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::getaddrinfo , host : 80 , errno = {n}
)"},
{"SendTo", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::SendTo ::WSAStartup failed
    numbers except 0
)"},
{"SendTo", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 2, 17})    -> 10.0.0.1:80
    sendto(1001, "abcd", 4, 0, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    ComputerName()                              when Packet Trace or Verbose Packet Trace
    log Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80)
    log Verbose Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: host (80), data: 61626364
    WSACleanup()                                fails
    returns 4
)"},
{"SendTo by broadcast", R"(
    WSAStartup(0x0101)
    getaddrinfo("255.255.255.255", "80", {0, 0, 2, 17})   -> 255.255.255.255:80
    sendto(1001, "abcd", 4, 0, 255.255.255.255:80, 16)
    freeaddrinfo(1)
    ComputerName()                              when Packet Trace or Verbose Packet Trace
    log Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: 255.255.255.255 (80)
    log Verbose Packet Trace: Sendto 4 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address: 255.255.255.255 (80), data: 61626364
    WSACleanup()
    returns 4
)"},
{"SendTo by broadcast", R"(
    WSAStartup(0x0101)
    getaddrinfo("255.255.255.255", "80", {0, 0, 2, 17})   -> 255.255.255.255:80
    sendto(1001, "abcd", 4, 0, 255.255.255.255:80, 16)    fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::sendto , 255.255.255.255 : 80 , errno = {n}
)"},
{"SendTo by broadcast", R"(
    WSAStartup(0x0101)
    getaddrinfo("255.255.255.255", "80", {0, 0, 2, 17})   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::getaddrinfo , 255.255.255.255 : 80 , errno = {n}
)"},
{"SendTo by broadcast", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::SendTo ::WSAStartup failed
    numbers except 0
)"},
{"SendTo by broadcast", R"(
    WSAStartup(0x0101)
    getaddrinfo("255.255.255.255", "80", {0, 0, 2, 17})   -> nothing
    freeaddrinfo(null)
    WSAGetLastError()
    log Error
    WSACleanup()                                fails
    throws VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , ::sendto , 255.255.255.255 : 80 , errno = {left}
)"},

// Datagrams from anywhere: whoever cannot be told is not a failure of the operation.

{"RecvFrom", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "abc" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)   -> peer 99
    log Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: peer (99)
    log Verbose Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: peer (99), data: 616263
    WSACleanup()
    returns 3
    holds host=peer port=99 buffer=6162632E2E2E2E2E
)"},
{"RecvFrom", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)   -> peer 99
    log Packet Trace: Recvfrom 0 bytes, Local address: here.example (4000), Remote address: peer (99)
    log Verbose Packet Trace: Recvfrom 0 bytes, Local address: here.example (4000), Remote address: peer (99), data: {none}
    WSACleanup()
    returns 0
    holds host=peer port=99
)"},
{"RecvFrom", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "abc" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)   fails
    WSAGetLastError()
    log Error
    log Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: earlier-host (earlier-port)
    log Verbose Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: earlier-host (earlier-port), data: 616263
    WSACleanup()
    tells VelNet::SocketXtImpl::RecvFrom , cannot get remote host and port , ::getnameinfo , no-ip : no-port , errno = {n}
    returns 3
    holds buffer=6162632E2E2E2E2E
)"},
{"RecvFrom", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::RecvFrom , cannot recvfrom using connectionless socket , ::recvfrom , no-ip : no-port , errno = {n}
)"},
{"RecvFrom", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::RecvFrom ::WSAStartup failed
    numbers except 0
)"},
{"RecvFrom", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "abc" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 26)   -> peer 99
    log Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: peer (99)
    log Verbose Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: peer (99), data: 616263
    WSACleanup()                                fails
    returns 3
    holds host=peer port=99 buffer=6162632E2E2E2E2E
)"},
{"RecvFrom on a stream", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "abcdefgh" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   -> peer 99
    log Packet Trace: Recvfrom 8 bytes, Local address: here.example (4000), Remote address: peer (99)
    log Verbose Packet Trace: Recvfrom 8 bytes, Local address: here.example (4000), Remote address: peer (99), data: 6162636465666768
    WSACleanup()
    returns 8
    holds host=peer port=99 buffer=6162636465666768
)"},
{"RecvFrom on a stream", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   -> "abc" 10.0.0.9:4711
    getnameinfo(10.0.0.9:4711, 128, 1025, 32, 10)   fails returning -1
    WSAGetLastError()
    log Error
    log Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: earlier-host (earlier-port)
    log Verbose Packet Trace: Recvfrom 3 bytes, Local address: here.example (4000), Remote address: earlier-host (earlier-port), data: 616263
    WSACleanup()
    tells VelNet::SocketXtImpl::RecvFrom , cannot get remote host and port , ::getnameinfo , no-ip : no-port , errno = {n}
    returns 3
    holds buffer=6162632E2E2E2E2E
)"},
{"RecvFrom on a stream", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::RecvFrom , cannot recvfrom using connectionless socket , ::recvfrom , no-ip : no-port , errno = {n}
)"},
{"RecvFrom on a stream", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::RecvFrom ::WSAStartup failed
    numbers except 0
)"},
{"RecvFrom on a stream", R"(
    WSAStartup(0x0101)
    recvfrom(1001, 8, 0, 128)                   fails 10040
    WSAGetLastError()
    log Error
    WSACleanup()                                fails
    throws VelNet::SocketXtImpl::RecvFrom , cannot recvfrom using connectionless socket , ::recvfrom , no-ip : no-port , errno = {10040}
)"},
};
// clang-format on

struct Scene {
    VelBase::ReturnPtrI<SocketXtImpl> socket;
    std::string buffer = "........";
    VelBase::ReturnString host = "earlier-host", port = "earlier-port";
};

Properties StateOf(const Scene& scene) {
    Properties properties = PropertiesOf(*scene.socket);
    properties["buffer"] = HexBytes(scene.buffer.data(), 8).substr(2);
    properties["host"] = scene.host.c_str();
    properties["port"] = scene.port.c_str();
    return properties;
}

std::function<Trial()> Filling(const std::function<int(Scene&)>& operation, int type) {
    return [=] {
        const auto scene = std::make_shared<Scene>();
        scene->socket = AddressedXt(STATE_CONNECTED, type);
        return Trial{.act = [=] { return std::to_string(operation(*scene)); },
                     .state = [=] { return StateOf(*scene); }};
    };
}

int ReceiveFromAnyone(Scene& scene) {
    return scene.socket->RecvFrom(scene.buffer.data(), 8, scene.host, scene.port);
}

int ReceiveFromPeer(Scene& scene) {
    return scene.socket->Receive(scene.buffer.data(), 8);
}

const FaultTable Table = {
    {
        {"Send", OnXt([](auto& socket) { return socket.Send("abcd", 4); })},
        {"Receive", Filling(ReceiveFromPeer, Winsock::TypeStream)},
        {"SendTo", OnXt([](auto& socket) { return socket.SendTo("abcd", 4, "host", "80"); },
                        STATE_CREATED, Winsock::TypeDatagram)},
        {"SendTo by broadcast",
         OnXt([](auto& socket) { return socket.SendTo("abcd", 4, SPECIAL_BROADCAST, "80"); },
              STATE_CREATED, Winsock::TypeDatagram)},
        {"RecvFrom", Filling(ReceiveFromAnyone, Winsock::TypeDatagram)},
        {"RecvFrom on a stream", Filling(ReceiveFromAnyone, Winsock::TypeStream)},
    },
    Stories,
    true};

class FaultsOfXtTransfers : public XtTest {};

TEST_F(FaultsOfXtTransfers, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfXtTransfers, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfXtTransfers, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
