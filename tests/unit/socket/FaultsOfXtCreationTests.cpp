// The extended socket's creation when a call of the system fails or answers oddly.
#include "FaultStorySockets.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// Creation: of the first address of this machine for which there is a socket.

{"create", R"(
    WSAStartup(0x0101)
    ComputerName()                              -> ME
    getaddrinfo("ME", null, {0, 0, 1, 6})       -> [2001:DB8::1]:0 10.0.0.1:0
    socket(23, 1, 6)                            -> 1002
    freeaddrinfo(1)
    WSACleanup()
    returns 1002/created/:/:/1/6/2
    opens socket 1002
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   -> [2001:DB8::1]:0 10.0.0.1:0
    socket(23, 1, 6)                            fails
    socket(2, 1, 6)                             -> 0
    freeaddrinfo(1)
    WSACleanup()
    returns 0/created/:/:/1/6/1
    opens socket 0
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   -> (7) 10.0.0.1:0
    socket(7, 1, 6)                             -> 1002
    freeaddrinfo(1)
    WSACleanup()
    returns 1002/created/:/:/1/6/0
    opens socket 1002
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   -> [2001:DB8::1]:0 10.0.0.1:0
    socket(23, 1, 6)                            fails 10047
    socket(2, 1, 6)                             fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , errno = {n}
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   -> nothing
    freeaddrinfo(null)
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , errno = {left}
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::getaddrinfo ,  , errno = {n}
)"},
{"create", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::CreateSocketXt ::WSAStartup failed
    numbers except 0
)"},
{"create", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 1, 6})   -> 10.0.0.1:0
    socket(2, 1, 6)                             -> 1002
    freeaddrinfo(1)
    WSACleanup()                                fails
    returns 1002/created/:/:/1/6/1
    opens socket 1002
)"},
{"create for IPv6", R"(
    WSAStartup(0x0101)
    socket(23, 2, 17)                           -> 1002
    WSACleanup()
    returns 1002/created/:/:/2/17/2
    opens socket 1002
)"},
{"create for IPv6", R"(
    WSAStartup(0x0101)
    socket(23, 2, 17)                           fails
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , errno = {n}
)"},
{"create for IPv6", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::CreateSocketXt ::WSAStartup failed
    numbers except 0
)"},
{"create for IPv6", R"(
    WSAStartup(0x0101)
    socket(23, 2, 17)                           -> 1002
    WSACleanup()                                fails
    returns 1002/created/:/:/2/17/2
    opens socket 1002
)"},
{"create what has no name", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 0, 0})   -> 10.0.0.1:0
    socket(2, 0, 0)                             -> 1002
    freeaddrinfo(1)
    WSACleanup()
    returns 1002/created/:/:/0/0/1
    opens socket 1002
)"},
{"create what has no name", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 0, 0})   -> 10.0.0.1:0
    socket(2, 0, 0)                             fails
    WSAGetLastError()
    freeaddrinfo(1)
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , errno = {n}
)"},
{"create what has no name", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 0, 0})   fails returning 1
    WSAGetLastError()
    log Error
    WSACleanup()
    throws VelNet::CreateSocketXt , cannot create a socket , ::getaddrinfo ,  , errno = {n}
)"},
{"create what has no name", R"(
    WSAStartup(0x0101)                          fails
    ErrorDescription({u})
    raises VelNet::CreateSocketXt ::WSAStartup failed
    numbers except 0
)"},
{"create what has no name", R"(
    WSAStartup(0x0101)
    ComputerName()
    getaddrinfo("SCRIPTED-HOST", null, {0, 0, 0, 0})   -> 10.0.0.1:0
    socket(2, 0, 0)                             -> 1002
    freeaddrinfo(1)
    WSACleanup()                                fails
    returns 1002/created/:/:/0/0/1
    opens socket 1002
)"},
};
// clang-format on

template <class... Family>
std::function<Trial()> Creation(int type, int protocol, Family... family) {
    return [=] {
        const auto made = std::make_shared<VelBase::ReturnPtrI<SocketXt>>();
        return Trial{.act = [=] {
            *made = CreateSocketXt(static_cast<Socket::SOCKET_TYPE>(type),
                                   static_cast<Socket::SOCKET_PROTOCOL>(protocol), family...);
            return SummaryOf(**made);
        }};
    };
}

const FaultTable Table = {{
                              {"create", Creation(0, 0)},
                              {"create for IPv6", Creation(1, 1, SocketXt::FAMILY_IPV6)},
                              {"create what has no name", Creation(5, 7)},
                          },
                          Stories,
                          true};

class FaultsOfXtCreation : public XtTest {};

TEST_F(FaultsOfXtCreation, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfXtCreation, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfXtCreation, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
