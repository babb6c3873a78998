// The machine's name servers when reading its settings fails.
#include "FaultStorySockets.h"
#include "TcpipSettingsFixture.h"

namespace SocketTests {
namespace {

// clang-format off
constexpr FaultStory Stories[] = {

// The interfaces are walked from the last on, for whichever has a value that is not empty.

{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)
    ReadValue(3, "NameServer")
    CloseKey(3)
    CloseKey(1)
    inet_addr("10.0.0.1")
    inet_addr("10.0.0.2")
    returns 10.0.0.1 10.0.0.2
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)   fails
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)
    ReadValue(3, "NameServer")
    CloseKey(3)
    CloseKey(1)
    inet_addr("10.0.0.1")
    inet_addr("10.0.0.2")
    returns 10.0.0.1 10.0.0.2
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)
    ReadValue(3, "NameServer")
    CloseKey(3)
    CloseKey(1)
    inet_addr("10.0.0.1")   fails
    log Error
    throws VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not an Internet Protocol dotted address: 10.0.0.1
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)
    ReadValue(3, "NameServer")
    CloseKey(3)
    CloseKey(1)
    inet_addr("10.0.0.1")
    inet_addr("10.0.0.2")   fails
    log Error
    throws VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not an Internet Protocol dotted address: 10.0.0.2
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")   fails
    ErrorDescription({u})
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot list the sub-keys of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)   fails
    ErrorDescription({u})
    CloseKey(2)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpNameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")   fails
    ErrorDescription({u})
    CloseKey(2)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpNameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)   fails
    ErrorDescription({u})
    CloseKey(2)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value NameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{B}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpNameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value NameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer", R"(
    GetVersionExW(276)
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    OpenSubKey(1, "{B}")
    ReadValue(2, "DhcpNameServer", null)
    ReadValue(2, "DhcpNameServer")
    ReadValue(2, "NameServer", null)
    CloseKey(2)
    OpenSubKey(1, "{A}")
    ReadValue(3, "DhcpNameServer", null)
    ReadValue(3, "NameServer", null)
    ReadValue(3, "NameServer")   fails
    ErrorDescription({u})
    CloseKey(3)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value NameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces\{A}: Description of {u}.
    numbers except 0
)"},

{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)
    ReadValue(1, "NameServer")
    ReadValue(1, "DhcpNameServer", null)
    ReadValue(1, "DhcpNameServer")
    CloseKey(1)
    inet_addr("10.0.0.3")
    returns 10.0.0.3
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   fails
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: NameServer and DhcpNameServer keys are not set up
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)
    ReadValue(1, "NameServer")
    ReadValue(1, "DhcpNameServer", null)
    ReadValue(1, "DhcpNameServer")
    CloseKey(1)
    inet_addr("10.0.0.3")   fails
    log Error
    throws VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is not an Internet Protocol dotted address: 10.0.0.3
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")   fails
    ErrorDescription({u})
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot open the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value NameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)
    ReadValue(1, "NameServer")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value NameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)
    ReadValue(1, "NameServer")
    ReadValue(1, "DhcpNameServer", null)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpNameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   -> 4
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters")
    ReadValue(1, "NameServer", null)
    ReadValue(1, "NameServer")
    ReadValue(1, "DhcpNameServer", null)
    ReadValue(1, "DhcpNameServer")   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot read the value DhcpNameServer of the key System\CurrentControlSet\Services\Tcpip\Parameters: Description of {u}.
    numbers except 0
)"},
{"GetLocalMachineDomainNameServer in the older layout", R"(
    GetVersionExW(276)   fails 122
    OpenKey(3, "System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces")
    SubKeyNames(1)   fails
    ErrorDescription({u})
    CloseKey(1)
    log Error
    throws VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not configured on this machine. Registry error: Cannot list the sub-keys of the key System\CurrentControlSet\Services\Tcpip\Parameters\Interfaces: Description of {u}.
    numbers except 0
)"},
};
// clang-format on

std::string Servers() {
    const auto servers = SocketAddress::GetLocalMachineDomainNameServer();
    std::string texts;
    for (unsigned int index = 0; index < servers->GetCount(); ++index)
        texts.append(index == 0 ? "" : " ")
            .append(servers->GetOctets(index).GetAddressString().c_str());
    return texts;
}

// The settings are there for one trial.
std::function<Trial()> Asking(const std::function<void()>& layOut) {
    return [=] {
        ForgetRegistry();
        layOut();
        return Trial{.act = Servers};
    };
}

void LayOutInterfaces() {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1, 10.0.0.2"}});
    AddInterface("{B}", {{"DhcpNameServer", u""}});
}

void LayOutParameters() {
    AddParameters({{"NameServer", u""}, {"DhcpNameServer", u"10.0.0.3"}});
    RegistryTree().Key(InterfacesPath);
}

const FaultTable Table = {
    {
        {"GetLocalMachineDomainNameServer", Asking(LayOutInterfaces)},
        {"GetLocalMachineDomainNameServer in the older layout", Asking(LayOutParameters)},
    },
    Stories};

class FaultsOfNameServers : public SocketTest {};

TEST_F(FaultsOfNameServers, GoAsTold) {
    ExpectEachStory(Table);
}

TEST_F(FaultsOfNameServers, AreToldOfEveryCall) {
    ExpectEveryCallFails(Table);
}

TEST_F(FaultsOfNameServers, LoseNothing) {
    ExpectNothingIsLost(Table);
}

}  // namespace
}  // namespace SocketTests
