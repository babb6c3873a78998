// The extended socket's addresses and connections when a call of the system fails or answers oddly.
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Binding

{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80
    bind(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    WSACleanup()
    holds state=bound local=host:80
)"},
{"Bind", R"(
    WSAStartup(0x0101)                          -> 0 0x0001 0xFFFF
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> [2001:DB8::1]:80 10.0.0.1:80
    bind(1001, [2001:DB8:0:0:0:0:0:1]:80, 28)   fails
    bind(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    WSACleanup()
    holds state=bound local=host:80
)"},
{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> [2001:DB8::1]:80 10.0.0.1:80
    bind(1001, [2001:DB8:0:0:0:0:0:1]:80, 28)   fails 10014
    bind(1001, 10.0.0.1:80, 16)                 fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::bind , host : 80 , errno = {n}
)"},
{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::getaddrinfo , host : 80 , errno = {n}
)"},
{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     fails returning -1
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::getaddrinfo , host : 80 , errno = {n}
)"},
{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> nothing
    freeaddrinfo(null)
    WSACleanup()
)"},
{"Bind", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Bind ::WSAStartup failed
    numbers except 0
)"},
{"Bind", R"(
    WSAStartup(0x0101)
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80
    bind(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    WSACleanup()                                fails
    holds state=bound local=host:80
)"},
{"Bind a datagram socket to all addresses", R"(
    WSAStartup(0x0101)
    getaddrinfo("::0", "80", {0, 0, 2, 17})     -> [::0]:80
    bind(1001, [0:0:0:0:0:0:0:0]:80, 28)
    freeaddrinfo(1)
    WSACleanup()
    holds state=connected local=::0:80
)"},
{"Bind a datagram socket to all addresses", R"(
    WSAStartup(0x0101)
    getaddrinfo("::0", "80", {0, 0, 2, 17})     -> [::0]:80
    bind(1001, [0:0:0:0:0:0:0:0]:80, 28)        fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::bind , ::0 : 80 , errno = {n}
)"},
{"Bind a datagram socket to all addresses", R"(
    WSAStartup(0x0101)
    getaddrinfo("::0", "80", {0, 0, 2, 17})     fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Bind , cannot bind socket to local address , ::getaddrinfo , ::0 : 80 , errno = {n}
)"},
{"Bind a datagram socket to all addresses", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Bind ::WSAStartup failed
    numbers except 0
)"},
{"Bind a datagram socket to all addresses", R"(
    WSAStartup(0x0101)
    getaddrinfo("::0", "80", {0, 0, 2, 17})     -> [::0]:80
    bind(1001, [0:0:0:0:0:0:0:0]:80, 28)
    freeaddrinfo(1)
    WSACleanup()                                fails
    holds state=connected local=::0:80
)"},

// Listening. Without texts nothing stands between the call and the number.

{"Listen", R"(
    listen(1001, 2)
    returns 0
    holds state=listening
)"},
{"Listen", R"(
    listen(1001, 2)                             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Listen , cannot listen on socket , ::listen , here.example : 4000 , errno = {n}
)"},
{"Listen without texts", R"(
    listen(1001, 2)
    returns 0
    holds state=listening
)"},
{"Listen without texts", R"(
    listen(1001, 2)                             fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketXtImpl::Listen , cannot listen on socket , ::listen ,  , errno = {n}
)"},

// Connecting: the local texts are set first and stay.

{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80
    connect(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    log Connection Trace: Connected, Local address: SCRIPTED-HOST (0), Remote address: host (80)
    WSACleanup()
    holds state=connected local=SCRIPTED-HOST:0 remote=host:80
)"},
{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()                              -> ANOTHER
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80 [2001:DB8::2]:80
    connect(1001, 10.0.0.1:80, 16)              fails
    connect(1001, [2001:DB8:0:0:0:0:0:2]:80, 28)
    freeaddrinfo(1)
    log Connection Trace: Connected, Local address: ANOTHER (0), Remote address: host (80)
    WSACleanup()
    holds state=connected local=ANOTHER:0 remote=host:80
)"},
{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80 10.0.0.2:80
    connect(1001, 10.0.0.1:80, 16)              fails 10061
    connect(1001, 10.0.0.2:80, 16)              fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , ::connect , SCRIPTED-HOST:0 : host:80 , errno = {n}
    holds local=SCRIPTED-HOST:0
)"},
{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("host", "80", {0, 0, 1, 6})     fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , ::getaddrinfo , host : 80 , errno = {n}
    holds local=SCRIPTED-HOST:0
)"},
{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> nothing
    freeaddrinfo(null)
    log Connection Trace: Connected, Local address: SCRIPTED-HOST (0), Remote address: there.example (http)
    WSACleanup()
    holds local=SCRIPTED-HOST:0
)"},
{"Connect", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Connect ::WSAStartup failed
    numbers except 0
)"},
{"Connect", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("host", "80", {0, 0, 1, 6})     -> 10.0.0.1:80
    connect(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    log Connection Trace: Connected, Local address: SCRIPTED-HOST (0), Remote address: host (80)
    WSACleanup()                                fails
    holds state=connected local=SCRIPTED-HOST:0 remote=host:80
)"},
{"Connect to this machine", R"(
    ComputerName()                              -> FIRST
    WSAStartup(0x0101)
    ComputerName()                              -> SECOND
    getaddrinfo("FIRST", "80", {0, 0, 1, 6})    -> 10.0.0.1:80
    connect(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    log Connection Trace: Connected, Local address: SECOND (0), Remote address: FIRST (80)
    WSACleanup()
    holds state=connected local=SECOND:0 remote=FIRST:80
)"},
{"Connect to this machine", R"(
    ComputerName()
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", "80", {0, 0, 1, 6})   -> 10.0.0.1:80
    connect(1001, 10.0.0.1:80, 16)              fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , ::connect , SCRIPTED-HOST:0 : SCRIPTED-HOST:80 , errno = {n}
    holds local=SCRIPTED-HOST:0
)"},
{"Connect to this machine", R"(
    ComputerName()
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", "80", {0, 0, 1, 6})   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::SocketXtImpl::Connect , cannot connect local socket to a remote address , ::getaddrinfo , SCRIPTED-HOST : 80 , errno = {n}
    holds local=SCRIPTED-HOST:0
)"},
{"Connect to this machine", R"(
    ComputerName()
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::SocketXtImpl::Connect ::WSAStartup failed
    numbers except 0
)"},
{"Connect to this machine", R"(
    ComputerName()
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", "80", {0, 0, 1, 6})   -> 10.0.0.1:80
    connect(1001, 10.0.0.1:80, 16)
    freeaddrinfo(1)
    log Connection Trace: Connected, Local address: SCRIPTED-HOST (0), Remote address: SCRIPTED-HOST (80)
    WSACleanup()                                fails
    holds state=connected local=SCRIPTED-HOST:0 remote=SCRIPTED-HOST:80
)"},
};
// clang-format on

VelBase::ReturnPtrI<SocketXtImpl> XtWithoutTexts() {
    return {new SocketXtImpl(OpenedHandle(), STATE_CREATED, Winsock::TypeStream,
                             Winsock::ProtocolTcp, SocketXt::FAMILY_IPV4)};
}

const FaultTable Table = {
    {
        {"Bind", OnXt([](auto& socket) { socket.Bind("host", "80"); }, STATE_CREATED)},
        {"Bind a datagram socket to all addresses",
         OnXt([](auto& socket) { socket.Bind(SPECIAL_ANY, "80"); }, STATE_CREATED,
              Winsock::TypeDatagram, SocketXt::FAMILY_IPV6)},
        {"Listen", OnXt([](auto& socket) { return socket.Listen(); }, STATE_CREATED)},
        {"Listen without texts",
         [] { return TrialOn(XtWithoutTexts(), [](auto& socket) { return socket.Listen(); }); }},
        {"Connect", OnXt([](auto& socket) { socket.Connect("host", "80"); }, STATE_CREATED)},
        {"Connect to this machine",
         OnXt([](auto& socket) { socket.Connect(SPECIAL_THIS_MACHINE, "80"); }, STATE_CREATED)},
    },
    Stories,
    true};

class FaultsOfXtConnections : public XtTest {};

TEST_F(FaultsOfXtConnections, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfXtConnections, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfXtConnections, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
