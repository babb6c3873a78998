// What the module reads of the registry: the machine's DNS settings, the configured IP version.
#include <VelNet/SocketAddress.h>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class Settings : public LayerTest {};

constexpr char Parameters[] = "System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
constexpr char Interfaces[] = "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces";
constexpr char NotConfigured[] =
    "() - FAIL. The TCP protocol is not configured on this machine. Registry error: ";

std::string InterfacePath(const std::string& name) {
    return std::string(Interfaces) + '\\' + name;
}

std::string Domain() {
    return SocketAddress::GetLocalMachineDomain().c_str();
}

Lines NameServers() {
    const auto found = SocketAddress::GetLocalMachineDomainNameServer();
    Lines addresses;
    for (unsigned int index = 0; index < found->GetCount(); ++index)
        addresses.emplace_back(found->GetOctets(index).GetAddressString().c_str());
    return addresses;
}

Failure NotRead(const std::string& operation, const std::string& reason) {
    return {Widen("VelNet::SocketAddress::" + operation + NotConfigured + reason), -1};
}

// Two interfaces, of which the second has what is asked for.
void AddInterfaces() {
    RegistryTree()
        .Key(InterfacePath("{A}"))
        .Value(InterfacePath("{B}"), "Domain", u"b.example")
        .Value(InterfacePath("{B}"), "NameServer", u"10.0.0.1,10.0.0.2");
}

TEST_F(Settings, VersionIsAskedForWithAZeroedRecordOfItsSize) {
    Domain();
    std::string record(276, '\0');
    record[0] = 276 % 256;
    record[1] = 276 / 256;
    EXPECT_EQ(LastEventOf("GetVersionExW").bytes, record);
}

TEST_F(Settings, NewerLayoutIsReadFromTheInterfaces) {
    AddInterfaces();
    EXPECT_EQ(Domain(), "b.example");
    // The listing ends when the system has no more names.
    EXPECT_EQ(TranscriptWithout({"SubKeyNames"}),
              (Lines{"GetVersionExW(276)", std::string("OpenKey(3, \"") + Interfaces + "\")",
                     "OpenSubKey(1, \"{A}\")", "ReadValue(2, \"DhcpDomain\", null)",
                     "ReadValue(2, \"Domain\", null)", "CloseKey(2)", "OpenSubKey(1, \"{B}\")",
                     "ReadValue(3, \"DhcpDomain\", null)", "ReadValue(3, \"Domain\", null)",
                     "ReadValue(3, \"Domain\")", "CloseKey(3)", "CloseKey(1)"}));
    EXPECT_EQ(CountOf("SubKeyNames"), 3);
}

TEST_F(Settings, NameServersAreReadFromTheLastInterface) {
    AddInterfaces();
    EXPECT_EQ(NameServers(), (Lines{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(EventsOf("OpenSubKey").size(), 1U);
    EXPECT_EQ(LastEventOf("OpenSubKey").text, "OpenSubKey(1, \"{B}\")");
}

TEST_F(Settings, OlderLayoutIsReadFromTheParameters) {
    AddInterfaces();
    RegistryTree().Value(Parameters, "Domain", u"older.example");
    for (const auto& [major, domain] :
         {std::pair{4, "older.example"}, {0, "older.example"}, {5, "b.example"}}) {
        On::GetVersionExW().Returns(major);
        EXPECT_EQ(Domain(), domain) << major;
    }
    On::GetVersionExW().Fails(122);
    EXPECT_EQ(Domain(), "b.example");
}

// Each call that reads the registry fails in turn, a listing midway too.
TEST_F(Settings, EachFailureToReadIsToldWithItsReason) {
    AddInterfaces();
    const std::string list = std::string("Cannot list the sub-keys of the key ") + Interfaces;
    On::OpenKey().Fails(5);
    EXPECT_EQ(FailureOf(Domain),
              NotRead("GetLocalMachineDomain",
                      std::string("Cannot open the key ") + Interfaces + ": Description of 5."));
    for (const int earlier : {0, 1, 2}) {
        On::SubKeyNames().Passes(earlier).Fails(5);
        EXPECT_EQ(FailureOf(Domain),
                  NotRead("GetLocalMachineDomain", list + ": Description of 5."));
    }
    On::OpenSubKey().Passes(1).Fails(1018);
    EXPECT_EQ(FailureOf(NameServers), NoFailure());
    EXPECT_EQ(FailureOf(Domain),
              NotRead("GetLocalMachineDomain",
                      "Cannot open the key " + InterfacePath("{A}") + ": Description of 1018."));
    for (const int earlier : {0, 1}) {
        On::ReadValue().Passes(earlier).Fails(6);
        const std::string value = earlier == 0 ? "DhcpNameServer" : "NameServer";
        EXPECT_EQ(FailureOf(NameServers),
                  NotRead("GetLocalMachineDomainNameServer",
                          "Cannot read the value " + value + " of the key " + InterfacePath("{B}") +
                              ": Description of 6."));
    }
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

TEST_F(Settings, LongValuesAreReadWhole) {
    const std::u16string domain(1000, u'd');
    RegistryTree().Value(InterfacePath("{A}"), "Domain", domain);
    EXPECT_EQ(Widen(Domain()), domain);
}

TEST_F(Settings, IpVersionIsReadOnceAStart) {
    RegistryTree().Value("SOFTWARE\\Corvane\\Orrin Server", "IPVersion", u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    EXPECT_EQ(Transcript(),
              (Lines{"OpenKey(3, \"SOFTWARE\\Corvane\")", "OpenSubKey(1, \"Orrin Server\")",
                     "CloseKey(2)", "OpenSubKey(1, \"Orrin Server\")",
                     "ReadValue(3, \"IPVersion\", null)", "ReadValue(3, \"IPVersion\")",
                     "CloseKey(3)", "CloseKey(1)"}));
    ClearTranscript();
    RegistryTree().Value("SOFTWARE\\Corvane\\Orrin Server", "IPVersion", u"4");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(Settings, IpVersionThatCannotBeReadIsFour) {
    RegistryTree().Value("SOFTWARE\\Corvane\\Orrin Server", "IPVersion", u"6");
    Loopback::EnableAllRouters();
    On::OpenKey().Fails(5);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(TakeRecords(), Records());
}

}  // namespace
}  // namespace ModuleTests
