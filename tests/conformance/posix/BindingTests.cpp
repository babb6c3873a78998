// Names and ports that the system does not tell or would give to others.
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <utility>
#include <vector>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// Takes a socket's descriptor away for its lifetime.
class Absence {
public:
    explicit Absence(const OwnedSocket& socket)
        : number_(static_cast<int>(socket.Get())), kept_(::fcntl(number_, F_DUPFD_CLOEXEC, 3)) {
        ::close(number_);
    }
    ~Absence() {
        ::dup2(kept_, number_);
        ::close(kept_);
    }
    Absence(const Absence&) = delete;
    Absence& operator=(const Absence&) = delete;

private:
    int number_;
    int kept_;
};

using BindingWithAnUnknownName = Started;

TEST_F(BindingWithAnUnknownName, IsAFailureThatLeavesTheRoomAlone) {
    const OwnedSocket stream = NewBoundStream();
    const OwnedSocket datagram = NewBoundDatagram();
    for (const OwnedSocket* socket : {&stream, &datagram}) {
        Winsock::AddressIpv4 address = Ipv4(9, 9, 9, 9, 99);
        int length = sizeof address;
        {
            const Absence absence(*socket);
            EXPECT_TRUE(FailsWith(10038, Winsock::getsockname(socket->Get(), &address, &length)));
        }
        EXPECT_EQ(address.address[0], 9);
        EXPECT_TRUE(Succeeds(Winsock::getsockname(socket->Get(), &address, &length)));
    }
}

TEST_F(BindingWithAnUnknownName, IsNotWrittenToNull) {
    const OwnedSocket bound = NewBoundStream();
    const Pair pair = NewConnectedPair();
    int length = sizeof(Winsock::AddressStorage);
    EXPECT_TRUE(FailsWith(10014, Winsock::getsockname(bound.Get(), nullptr, &length)));
    EXPECT_TRUE(FailsWith(10014, Winsock::getpeername(pair.client.Get(), nullptr, &length)));
    Winsock::AddressIpv4 address = {};
    EXPECT_TRUE(FailsWith(10014, Winsock::getpeername(pair.client.Get(), &address, nullptr)));
    EXPECT_TRUE(FailsWith(10057, Winsock::getpeername(bound.Get(), nullptr, nullptr)));
}

OwnedSocket NewReusing(OwnedSocket socket = NewStream()) {
    EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    return socket;
}

OwnedSocket BoundAndReusing() {
    OwnedSocket socket = NewReusing();
    EXPECT_TRUE(Succeeds(Bind(socket, Loopback(0))));
    return socket;
}

Pair ConnectedFrom(OwnedSocket client) {
    const OwnedSocket listener = NewListener();
    EXPECT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    return {std::move(client), Accept(listener)};
}

// What another process has, which ends with this.
class OtherProcess {
public:
    // The scene has the process's sockets, the first of which is the one that counts.
    explicit OtherProcess(const std::function<std::vector<OwnedSocket>()>& scene) {
        int toChild[2];
        int toParent[2];
        EXPECT_EQ(::pipe2(toChild, O_CLOEXEC) | ::pipe2(toParent, O_CLOEXEC), 0);
        process_ = ::fork();
        if (process_ == 0) {
            ::close(toChild[1]);
            Live(scene, toChild[0], toParent[1]);
        }
        ::close(toChild[0]);
        ::close(toParent[1]);
        end_ = toChild[1];
        EXPECT_EQ(::read(toParent[0], &port_, sizeof port_), ssize_t{sizeof port_});
        ::close(toParent[0]);
    }
    ~OtherProcess() {
        ::close(end_);
        int status = 0;
        EXPECT_EQ(::waitpid(process_, &status, 0), process_);
        EXPECT_EQ(status, 0);
    }
    OtherProcess(const OtherProcess&) = delete;
    OtherProcess& operator=(const OtherProcess&) = delete;

    unsigned int Port() const { return port_; }

private:
    [[noreturn]] static void Live(const std::function<std::vector<OwnedSocket>()>& scene, int end,
                                  int parent) {
        const std::vector<OwnedSocket> sockets = scene();
        const unsigned int port = LocalPort(sockets.front());
        const bool told = ::write(parent, &port, sizeof port) == ssize_t{sizeof port};
        char nothing = 0;
        const bool ended = ::read(end, &nothing, 1) == 0;
        ::_exit(told && ended && !testing::Test::HasFailure() ? 0 : 1);
    }

    pid_t process_ = -1;
    int end_ = -1;
    unsigned int port_ = 0;
};

template <typename... Sockets>
std::vector<OwnedSocket> Listed(Sockets... sockets) {
    std::vector<OwnedSocket> list;
    (list.push_back(std::move(sockets)), ...);
    return list;
}

using BindingAnotherProcessesPort = Started;

void ExpectTaken(const OtherProcess& other) {
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), Loopback(other.Port()))));
    EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), Ipv4(0, 0, 0, 0, other.Port()))));
}

TEST_F(BindingAnotherProcessesPort, IsTakenIfItsStreamIsConnected) {
    for (const bool bound : {true, false}) {
        const OtherProcess other([bound] {
            Pair pair = ConnectedFrom(bound ? NewBoundStream() : NewStream());
            return Listed(std::move(pair.client), std::move(pair.server));
        });
        ExpectTaken(other);
        EXPECT_TRUE(FailsWith(10013, Bind(NewReusing(), Loopback(other.Port()))));
    }
}

TEST_F(BindingAnotherProcessesPort, IsSharedOnlyAmongThoseThatAsk) {
    const OtherProcess other([] { return Listed(BoundAndReusing()); });
    ExpectTaken(other);
    EXPECT_TRUE(Succeeds(Bind(NewReusing(), Loopback(other.Port()))));
}

TEST_F(BindingAnotherProcessesPort, IsSharedOnlyAmongThoseThatAskWhileConnectedToo) {
    const OtherProcess other([] {
        Pair pair = ConnectedFrom(BoundAndReusing());
        return Listed(std::move(pair.client), std::move(pair.server));
    });
    ExpectTaken(other);
    EXPECT_TRUE(Succeeds(Bind(NewReusing(), Loopback(other.Port()))));
}

TEST_F(BindingAnotherProcessesPort, IsFreeIfItsServerHasGoneAndOnlyItsConnectionsGoOn) {
    const OtherProcess other([] {
        const OwnedSocket listener = NewListener();
        OwnedSocket client = NewStream();
        EXPECT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
        return Listed(Accept(listener), std::move(client));
    });
    EXPECT_TRUE(Succeeds(Bind(NewStream(), Loopback(other.Port()))));
    EXPECT_TRUE(Succeeds(Bind(NewReusing(), Loopback(other.Port()))));
}

// Of a stream or of datagrams, over either IP version.
using Make = OwnedSocket (*)(int family);

template <typename Address>
Address NameOf(const OwnedSocket& socket) {
    Address address = {};
    int length = sizeof address;
    EXPECT_TRUE(Succeeds(Winsock::getsockname(socket.Get(), &address, &length)));
    return address;
}

// A port of one address is taken for that and for all of them, and the other way round: the kernel
// is stricter than Windows.
template <typename Address>
void ExpectTaken(Make make, const Address& specific, const Address& any) {
    const int family = specific.family;
    for (const auto& [taken, other] : {std::pair(specific, any), std::pair(any, specific)}) {
        const OwnedSocket bound = make(family);
        ASSERT_TRUE(Succeeds(Bind(bound, taken)));
        const auto own = NameOf<Address>(bound);
        Address others = other;
        std::copy_n(own.port, sizeof own.port, others.port);
        EXPECT_TRUE(FailsWith(10022, Bind(bound, own)));
        for (const Address& wanted : {own, others}) {
            EXPECT_TRUE(FailsWith(10048, Bind(make(family), wanted)));
            EXPECT_TRUE(FailsWith(10013, Bind(NewReusing(make(family)), wanted)));
        }
    }
}

using BindingATakenPort = Started;

TEST_F(BindingATakenPort, FailsOverEitherIpVersionAndForAllAddresses) {
    Winsock::AddressIpv6 anyIpv6 = {};
    anyIpv6.family = Winsock::FamilyIpv6;
    for (const Make make : {Make{NewStream}, Make{NewDatagram}}) {
        ExpectTaken(make, Loopback(0), Ipv4(0, 0, 0, 0, 0));
        ExpectTaken(make, LoopbackIpv6(0), anyIpv6);
    }
}

// Only a port that is taken has a number of its own for who asked for reuse.
TEST_F(BindingATakenPort, IsNotWhatAnAddressThatIsNotLocalIs) {
    constexpr unsigned int anyPort = 4711;
    for (const Make make : {Make{NewStream}, Make{NewDatagram}}) {
        const OwnedSocket reusing = NewReusing(make(Winsock::FamilyIpv4));
        EXPECT_TRUE(FailsWith(10049, Bind(reusing, Ipv4(192, 0, 2, 1, anyPort))));
    }
}

using BindingReuseFault = Started;

// What is left of the connection keeps its port, but nothing else fails.
TEST_F(BindingReuseFault, OfAClientThatIsClosedOrOfANewcomerKeepsThePortTaken) {
    for (const bool closing : {true, false}) {
        const OwnedSocket listener = NewListener();
        OwnedSocket client = NewStream();
        ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
        const Winsock::AddressIpv4 address = LocalAddress(client);
        const OwnedSocket server = Accept(listener);
        {
            const FailingCall fails(SystemCall::Setsockopt, ENOMEM,
                                    {.count = closing ? 1U : 0U, .option = SO_REUSEADDR});
            EXPECT_TRUE(Succeeds(Winsock::closesocket(client.Take())));
        }
        EXPECT_EQ(TryReceive(server), 0);
        const FailingCall fails(SystemCall::Setsockopt, ENOMEM,
                                {.count = closing ? 0U : 1U, .option = SO_REUSEADDR});
        EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), Loopback(PortOf(address)))));
    }
}

using BindingAndTheLastCleanUp = Started;

TEST_F(BindingAndTheLastCleanUp, LeavesTheClientsPortsFree) {
    OwnedSocket listener = NewListener();
    OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    const Winsock::AddressIpv4 address = LocalAddress(client);
    RawPeer server(::accept(static_cast<int>(listener.Get()), nullptr, nullptr));
    listener.Take();
    client.Take();
    ASSERT_TRUE(Succeeds(Winsock::WSACleanup()));
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    EXPECT_EQ(server.Receive(1), "");
    server.Close();
    ASSERT_TRUE(FindsPortTaken(PortOf(address)));
    EXPECT_TRUE(Succeeds(Bind(NewStream(), address)));
}

using BindingAndClosing = Started;

// Only a client's port is kept by its ended connection.
TEST_F(BindingAndClosing, TakesNoOptionWhereNoConnectionKeepsThePort) {
    Pair pair = NewConnectedPair();
    Pair reset = NewConnectedPair();
    ASSERT_TRUE(Succeeds(Send(reset.client, "unread"), 6));
    AwaitReadable(reset.server.Get());
    reset.server.Close();
    ASSERT_TRUE(FailsWith(10054, RepeatWhile(0, [&] { return TryReceive(reset.client); })));
    OwnedSocket datagram = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(datagram, Loopback(9))));
    OwnedSocket bound = NewBoundStream();
    OwnedSocket listener = NewListener();
    const CountedCall options(SystemCall::Setsockopt);
    for (OwnedSocket* socket : {&pair.server, &reset.client, &datagram, &bound, &listener})
        socket->Close();
    EXPECT_EQ(options.Seen(), 0U);
    pair.client.Close();
    EXPECT_EQ(options.Seen(), 1U);
}

TEST_F(BindingReuseFault, IsNothingThatAConnectionKnowsOf) {
    const OwnedSocket listener = BoundAndReusing();
    ASSERT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    const OwnedSocket client = NewReusing();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    const OwnedSocket server = Accept(listener);
    EXPECT_TRUE(Succeeds(Send(client, "there"), 5));
    EXPECT_EQ(Receive(server), "there");
    EXPECT_TRUE(Succeeds(Send(server, "back"), 4));
    EXPECT_EQ(Receive(client), "back");
}

}  // namespace
}  // namespace Conformance
