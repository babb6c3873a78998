// The machine's domain when reading its settings fails.
#include "FaultStorySockets.h"
#include "TcpipSettingsFixture.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// The interfaces are walked from the first on, for whichever has either value.

{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")
    ReadValue(3, "DhcpDomain", null)
    ReadValue(3, "Domain", null)
    ReadValue(3, "Domain")
    CloseKey(3)
    CloseKey(1)
    returns b.example
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)   fails
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")
    ReadValue(3, "DhcpDomain", null)
    ReadValue(3, "Domain", null)
    ReadValue(3, "Domain")
    CloseKey(3)
    CloseKey(1)
    returns b.example
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")   fails
    ErrorDescription({u})
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot list the sub-keys of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)   fails
    ErrorDescription({u})
    CloseKey(2)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpDomain of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)   fails
    ErrorDescription({u})
    CloseKey(2)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")
    ReadValue(3, "DhcpDomain", null)   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpDomain of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")
    ReadValue(3, "DhcpDomain", null)
    ReadValue(3, "Domain", null)   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{A}")
    ReadValue(2, "DhcpDomain", null)
    ReadValue(2, "Domain", null)
    CloseKey(2)
    OpenSubKey(1, "{B}")
    ReadValue(3, "DhcpDomain", null)
    ReadValue(3, "Domain", null)
    ReadValue(3, "Domain")   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},

// The older layout has one key, and an empty value there does not count.

{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "Domain")
    ReadValue(1, "DhcpDomain", null)
    ReadValue(1, "DhcpDomain")
    CloseKey(1)
    returns dhcp.example
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   fails
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    CloseKey(1)
    gethostname(200)   -> here
    returns here
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")   fails
    ErrorDescription({u})
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "Domain")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "Domain")
    ReadValue(1, "DhcpDomain", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpDomain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "Domain")
    ReadValue(1, "DhcpDomain", null)
    ReadValue(1, "DhcpDomain")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpDomain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},

// The host's name stands in for a domain.

{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "DhcpDomain", null)
    CloseKey(1)
    gethostname(200)   -> here
    returns here
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "DhcpDomain", null)
    CloseKey(1)
    gethostname(200)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not configured on this machine., errno = {n}
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")   fails
    ErrorDescription({u})
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value Domain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "Domain", null)
    ReadValue(1, "DhcpDomain", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpDomain of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   fails
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    CloseKey(1)
    gethostname(200)   -> here
    returns here
)"},

// Without the version the newer layout is read.

{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   fails 122
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot list the sub-keys of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomain in the older layout", R"(
    GetVersionExW(276)   fails 122
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    CloseKey(1)
    gethostname(200)   fails
    WSAGetLastError()
    log Error
    throws VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not configured on this machine., errno = {n}
)"},
{"GetLocalMachineDomain without a domain", R"(
    GetVersionExW(276)   fails 122
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot list the sub-keys of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
};
// clang-format on

// The settings are there for one trial.
std::function<Trial()> Asking(const std::function<void()>& layOut) {
    return [=] {
        ForgetRegistry();
        layOut();
        return Trial{
            .act = [] { return std::string(SocketAddress::GetLocalMachineDomain().c_str()); }};
    };
}

void LayOutInterfaces() {
    AddInterface("{A}");
    AddInterface("{B}", {{"Domain", u"b.example"}});
}

// Without an interface, whose key is there all the same.
void LayOutParameters(const Values& values) {
    AddParameters(values);
    RegistryTree().Key(InterfacesPath);
}

const FaultTable Table = {
    {
        {"GetLocalMachineDomain", Asking(LayOutInterfaces)},
        {"GetLocalMachineDomain in the older layout", Asking([] {
             LayOutParameters({{"Domain", u""}, {"DhcpDomain", u"dhcp.example"}});
         })},
        {"GetLocalMachineDomain without a domain", Asking([] { LayOutParameters({}); })},
    },
    Stories};

class FaultsOfDomains : public SocketTest {};

TEST_F(FaultsOfDomains, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfDomains, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfDomains, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
