// What the library reads of the machine's settings: the IP version of the installation, the DNS
// domain and the name servers.
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>
#include <loopback/LoopbackTest.h>
#include <loopback/Machine.h>
#include <loopback/ThisProcess.h>
#include <support/Wine.h>

#include <optional>
#include <vector>

namespace Loopback {
namespace {

using VelNet::SocketAddress;
using VelNet::SocketInitialization;
using VelNet::SocketXt;

class Settings : public testing::Test {
protected:
    void SetUp() override {
        if (!settings_.AreWritable()) GTEST_SKIP() << "the system lets no test write its settings";
    }

    Machine::Settings& Machines() { return settings_; }

private:
    Machine::Settings settings_;
};

constexpr const char* ProductKey = "SOFTWARE\\Corvane";
constexpr const char* ServerKey = "SOFTWARE\\Corvane\\Orrin Server";
constexpr const char* Version = "IPVersion";

// As a process finds it that has just started the layer.
SocketXt::ADDR_FAMILY VersionAfterStart() {
    const SocketInitialization layer;
    return SocketXt::GetIpVersion();
}

TEST_F(Settings, WithoutAnyTheVersionIsIpv4) {
    EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV4);
    Machines().MakeKey(ProductKey);
    EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV4);
    Machines().MakeKey(ServerKey);
    EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV4);
}

TEST_F(Settings, ExactlyASixIsIpv6) {
    Machines().Write(ServerKey, Version, "6");
    EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV6);
    for (const char* other : {"4", "06", "", "6\n", "6 ", " 6", "66", "six"}) {
        Machines().Write(ServerKey, Version, other);
        EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV4) << '"' << other << '"';
    }
}

TEST_F(Settings, OtherValuesAndOtherKeysDoNotCount) {
    Machines().Write(ServerKey, "Version", "6");
    Machines().Write(ProductKey, Version, "6");
    EXPECT_EQ(VersionAfterStart(), SocketXt::FAMILY_IPV4);
}

TEST_F(Settings, TheVersionIsReadOncePerStartOfTheLayer) {
    std::optional<SocketInitialization> layer(std::in_place);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    Machines().Write(ServerKey, Version, "6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    layer.emplace();
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    Machines().Write(ServerKey, Version, "4");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
}

TEST_F(Settings, TheVersionIsReadOnEveryCallWithoutTheLayer) {
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    Machines().Write(ServerKey, Version, "6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
}

const std::string Interfaces =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\";
// Before and after all names that interfaces have.
const std::string FirstInterface = Interfaces + "!";
const std::string LastInterface = Interfaces + "~";

std::string Domain() {
    return SocketAddress::GetLocalMachineDomain().c_str();
}

std::vector<std::string> NameServers() {
    const auto servers = SocketAddress::GetLocalMachineDomainNameServer();
    std::vector<std::string> texts;
    for (unsigned int index = 0; index < servers->GetCount(); ++index) {
        texts.emplace_back(servers->GetOctets(index).GetAddressString().c_str());
    }
    return texts;
}

TEST_F(Settings, TheDomainIsTheFirstInterfaces) {
    const SocketInitialization layer;
    Machines().Write(FirstInterface, "Domain", "static.example");
    Machines().Write(LastInterface, "DhcpDomain", "last.example");
    EXPECT_EQ(Domain(), "static.example");
    Machines().Write(FirstInterface, "DhcpDomain", "dynamic.example");
    EXPECT_EQ(Domain(), "dynamic.example");
}

TEST_F(Settings, AnEmptyDomainOfTheFirstInterfaceIsTheHostsName) {
    const SocketInitialization layer;
    Machines().Write(FirstInterface, "DhcpDomain", "");
    Machines().Write(FirstInterface, "Domain", "static.example");
    Machines().Write(LastInterface, "Domain", "last.example");
    EXPECT_EQ(Domain(), ThisProcess::HostName());
}

TEST_F(Settings, TheNameServersAreTheLastInterfaces) {
    const SocketInitialization layer;
    Machines().Write(FirstInterface, "NameServer", "10.9.9.9");
    Machines().Write(LastInterface, "NameServer", "10.0.0.1,10.0.0.2  10.0.0.1x10.0.0.3");
    EXPECT_EQ(NameServers(),
              (std::vector<std::string>{"10.0.0.1", "10.0.0.2", "10.0.0.1", "10.0.0.3"}));
    Machines().Write(LastInterface, "DhcpNameServer", "10.0.0.4");
    EXPECT_EQ(NameServers(), std::vector<std::string>{"10.0.0.4"});
}

class SettingsOfTheMachine : public LoopbackTest {
protected:
    SettingsOfTheMachine() { EnableOnly({Error}); }

    // The operation gave something, or says what is missing and logs it.
    void ExpectAnswer(bool answered, const Failure& failure, const std::u16string& label) {
        if (answered) {
            EXPECT_EQ(failure.code, 0) << testing::PrintToString(failure);
            EXPECT_EQ(Sink().Take(), Records{});
            return;
        }
        const std::u16string head =
            u"VelNet::SocketAddress::" + label +
            u"() - FAIL. The TCP protocol is not configured on this machine. Registry error: ";
        EXPECT_EQ(failure.text.substr(0, head.size()), head);
        EXPECT_GT(failure.text.size(), head.size());
        EXPECT_EQ(failure.code, -1);
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }
};

TEST_F(SettingsOfTheMachine, TheDomainIsGivenOrSaidToBeMissing) {
    std::string domain;
    const Failure failure = FailureOf([&] { domain = Domain(); });
    ExpectAnswer(!domain.empty(), failure, u"GetLocalMachineDomain");
}

TEST_F(SettingsOfTheMachine, NameServersAreGivenOrSaidToBeMissing) {
    std::vector<std::string> servers;
    const Failure failure = FailureOf([&] { servers = NameServers(); });
    ExpectAnswer(!servers.empty(), failure, u"GetLocalMachineDomainNameServer");
}

TEST_F(SettingsOfTheMachine, TheVersionIsOneOfTheTwo) {
    const SocketXt::ADDR_FAMILY version = SocketXt::GetIpVersion();
    EXPECT_TRUE(version == SocketXt::FAMILY_IPV4 || version == SocketXt::FAMILY_IPV6) << version;
    EXPECT_EQ(SocketXt::GetIpVersion(), version);
}

// A tree that says nothing, and nothing else to go by.
TEST_F(Settings, WithoutAnyServerTheFailureSaysWhatIsMissing) {
    if (Support::RunsOnWine()) GTEST_SKIP() << "the machine's own settings are there as well";
    const SocketInitialization layer;
    Machines().MakeKey(FirstInterface);
    EXPECT_EQ(FailureOf([] { NameServers(); }),
              (Failure{u"VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP "
                       u"protocol is not configured on this machine. Registry error: NameServer "
                       u"and DhcpNameServer keys are not set up",
                       -1}));
    EXPECT_EQ(Domain(), ThisProcess::HostName());
}

}  // namespace
}  // namespace Loopback
