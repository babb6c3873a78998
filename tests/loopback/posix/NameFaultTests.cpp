// What the questions for names and settings do when the system fails them, and what they leave
// alone.
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <loopback/LoopbackTest.h>
#include <loopback/Machine.h>
#include <loopback/posix/FaultTest.h>
#include <netdb.h>
#include <sys/syscall.h>

#include <algorithm>
#include <string>

namespace Loopback {
namespace {

using namespace SystemCalls;
using VelNet::SocketAddress;
using VelNet::SocketXt;

class NameFault : public LoopbackTest {
protected:
    NameFault() { EnableOnly({Error}); }
};

struct ResolverFault {
    int system;
    int winsock;
    std::u16string_view text;
};

constexpr ResolverFault ResolverFaults[] = {
    {TRY_AGAIN, 11002, u"Nonauthoritative host not found"},
    {NO_RECOVERY, 11003, u"This is a nonrecoverable error"},
    {NO_DATA, 11004, u"Valid name, no data record of requested type"},
    {ENOMEM, 11003, u"This is a nonrecoverable error"},
};

Failure NotResolvable(const ResolverFault& fault) {
    return SystemFailure(
        u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not "
        u"resolvable on this machine. Connection = {some.example}",
        fault.winsock, fault.text);
}

Failure Nameless(const ResolverFault& fault) {
    return SystemFailure(
        u"VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is not "
        u"resolvable on this machine. Connection = {10.1.2.3}",
        fault.winsock, fault.text);
}

TEST_F(NameFault, OfANamesAddressesIsThrownAndLogged) {
    constexpr ResolverFault unknown = {HOST_NOT_FOUND, 11001, u"host not found"};
    const auto expect = [this](const ResolverFault& fault) {
        const FailingCall fails(SystemCall::Gethostbyname, fault.system);
        const Failure failure = NotResolvable(fault);
        EXPECT_EQ(FailureOf([] { SocketAddress::GetOctetsFromMachineName("some.example"); }),
                  failure);
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    };
    std::for_each(std::begin(ResolverFaults), std::end(ResolverFaults), expect);
    expect(unknown);
}

// Required: this failure alone is thrown without being logged. An address without a name is one
// without data.
TEST_F(NameFault, OfAnAddresssNameIsThrownOnly) {
    constexpr ResolverFault unknown = {HOST_NOT_FOUND, 11004,
                                       u"Valid name, no data record of requested type"};
    const auto expect = [this](const ResolverFault& fault) {
        const FailingCall fails(SystemCall::Gethostbyaddr, fault.system);
        EXPECT_EQ(FailureOf([] {
                      SocketAddress::GetMachineNameFromOctets({10, 1, 2, 3});
                  }),
                  Nameless(fault));
        EXPECT_EQ(Sink().Take(), Records{});
    };
    std::for_each(std::begin(ResolverFaults), std::end(ResolverFaults), expect);
    expect(unknown);
}

TEST_F(NameFault, OfTheOwnNameIsThrownAndLogged) {
    for (const Fault& fault : Faults) {
        const FailingCall fails(SystemCall::Gethostname, fault.system);
        const Failure failure = fault.Of(
            u"VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
            u"configured on this machine.");
        EXPECT_EQ(FailureOf([] { SocketAddress::GetLocalMachineName(); }), failure);
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }
}

constexpr const char* Server = "SOFTWARE\\Corvane\\Orrin Server";
const std::string Interfaces = "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces";
constexpr const char* Interface =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\{1}";

class NameFaultInSettings : public NameFault {
protected:
    void SetUp() override {
        if (!settings_.AreWritable()) GTEST_SKIP() << "the system lets no test write its settings";
        settings_.Write(Interface, "Domain", "own.example");
        settings_.Write(Interface, "NameServer", "10.0.0.1");
        settings_.Write(Server, "IPVersion", "6");
    }

    // All that is asked of settings.
    static void AskForDomain() { SocketAddress::GetLocalMachineDomain(); }
    static void AskForNameServers() { SocketAddress::GetLocalMachineDomainNameServer(); }

    static Failure NotConfigured(const std::u16string& operation, const std::string& reason) {
        return {u"VelNet::SocketAddress::" + operation +
                    u"() - FAIL. The TCP protocol is not configured on this machine. Registry "
                    u"error: " +
                    Widen(reason),
                -1};
    }

    void ExpectFailure(const std::string& reason) {
        const Failure domain = NotConfigured(u"GetLocalMachineDomain", reason);
        const Failure servers = NotConfigured(u"GetLocalMachineDomainNameServer", reason);
        EXPECT_EQ(FailureOf(AskForDomain), domain);
        EXPECT_EQ(FailureOf(AskForNameServers), servers);
        EXPECT_EQ(Sink().Take(), (Records{{Error, domain.text}, {Error, servers.text}}));
    }

private:
    Machine::Settings settings_;
};

TEST_F(NameFaultInSettings, OfTheTreeIsThrownWithTheKeyAndTheReason) {
    const FailingCall fails(SystemCall::Open, EIO);
    ExpectFailure("Cannot open the key " + Interfaces + ": Input/output error");
}

TEST_F(NameFaultInSettings, OfAListingMidwayIsThrownWithTheKeyAndTheReason) {
    // Entries of the folder itself and of the one above come before.
    for (const unsigned int first : {1U, 2U, 3U, 4U}) {
        for (const auto ask : {AskForDomain, AskForNameServers}) {
            const FailingCall fails(SystemCall::Readdir, EIO, {.first = first, .count = 1});
            const Failure failure = FailureOf(ask);
            EXPECT_EQ(failure.code, -1) << first;
            EXPECT_TRUE(failure.text.ends_with(u"Interfaces: Input/output error")) << first;
        }
    }
}

TEST_F(NameFaultInSettings, OfAValueIsThrownWithItsNameAndTheReason) {
    const FailingCall fails(SystemCall::Read, EIO);
    const Failure failure = FailureOf(AskForDomain);
    EXPECT_EQ(failure, NotConfigured(u"GetLocalMachineDomain",
                                     "Cannot read the value Domain of the key " + Interfaces +
                                         "\\{1}: Input/output error"));
}

// Once read, the version is known for as long as the layer is up: so one test for each fault.
TEST_F(NameFaultInSettings, OfTheTreeLeavesTheVersionAtWhatItIsWithoutOne) {
    const FailingCall fails(SystemCall::Open, EIO);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_GE(fails.Seen(), 1U);
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(NameFaultInSettings, OfTheVersionLeavesItAtWhatItIsWithoutOne) {
    const FailingCall fails(SystemCall::Read, EIO);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_GE(fails.Seen(), 1U);
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(NameFaultInSettings, OfASignalIsNone) {
    const FailingCall fails(SystemCall::Read, EINTR, {.count = 3});
    EXPECT_STREQ(SocketAddress::GetLocalMachineDomain().c_str(), "own.example");
    EXPECT_GE(fails.Seen(), 4U);
}

// Calls that open a file for anything but reading.
class WritingOpens {
public:
    unsigned int Count() const { return count_; }

private:
    Word Look(const Call& call, Word flags) {
        if ((flags & O_ACCMODE) != O_RDONLY || (flags & (O_CREAT | O_TRUNC)) != 0) ++count_;
        return call.Make();
    }

    unsigned int count_ = 0;
    const HookedCall open_{SystemCall::Open,
                           [this](const Call& call) { return Look(call, call.Argument(1)); },
                           {.inAnyThread = true}};
    const HookedCall openat_{SystemCall::Openat,
                             [this](const Call& call) { return Look(call, call.Argument(2)); },
                             {.inAnyThread = true}};
    const HookedCall openat2_{SystemCall::Syscall,
                              [this](const Call& call) {
                                  return Look(call,
                                              static_cast<Word>(call.Pointer<open_how>(3)->flags));
                              },
                              {.option = SYS_openat2, .inAnyThread = true}};
    const HookedCall fopen_{SystemCall::Fopen,
                            [this](const Call& call) {
                                const std::string_view mode = call.Pointer<const char>(1);
                                const bool writes = mode.find_first_of("wa+") != mode.npos;
                                return Look(call, writes ? O_RDWR : O_RDONLY);
                            },
                            {.inAnyThread = true}};
};

void AskForAllNames() {
    SocketAddress::GetOctetsFromMachineName("localhost");
    SocketAddress::GetOctetsFromMachineName("");
    FailureOf([] { SocketAddress::GetMachineNameFromOctets(LocalHost()); });
    SocketAddress::GetLocalMachineName();
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    FailureOf([&socket] { socket->Connect("no..such", "http"); });
    FailureOf([&socket] { socket->Connect("127.0.0.1", "no-such-service"); });
}

TEST_F(NameFaultInSettings, OrNotNoVariableIsReadAndNoFileWritten) {
    const VelNet::SocketInitialization layer;
    const CountedCall variables(SystemCall::Getenv, {.inAnyThread = true});
    const CountedCall opened(SystemCall::Open);
    const WritingOpens writing;
    AskForAllNames();
    AskForDomain();
    AskForNameServers();
    SocketXt::GetIpVersion();
    EXPECT_EQ(variables.Seen(), 0U);
    EXPECT_EQ(writing.Count(), 0U);
    EXPECT_GE(opened.Seen(), 1U);
}

}  // namespace
}  // namespace Loopback
