// Peers of datagram sockets where the kernel has its own mind: what it has queued, where datagrams
// come from, and which ports it gives.
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <string>

#include "OwnNetwork.h"
#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using DatagramPeerQueue = Started;

// Datagrams of the peer to be among those of a stranger.
struct Crowd {
    OwnedSocket socket = NewBoundDatagram();
    OwnedSocket peer = NewBoundDatagram();
    OwnedSocket stranger = NewBoundDatagram();

    Crowd() { SetNonBlocking(socket); }
    void Hear(const OwnedSocket& sender, const std::string& text) const {
        EXPECT_EQ(SendTo(sender, text, LocalAddress(socket)), static_cast<int>(text.size()));
        AwaitReadable(socket.Get());
    }
};

TEST_F(DatagramPeerQueue, KeepsWhatThePeerSentBeforeItWasOne) {
    const Crowd crowd;
    for (const char* text : {"one", "two", "three"}) {
        crowd.Hear(crowd.stranger, "strange");
        crowd.Hear(crowd.peer, text);
        crowd.Hear(crowd.stranger, "strange");
    }
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    for (const char* text : {"one", "two", "three"}) {
        EXPECT_EQ(ReadyFor(crowd.socket), "rw");
        EXPECT_EQ(BytesAvailable(crowd.socket), std::strlen(text));
        EXPECT_EQ(Receive(crowd.socket), text);
    }
    EXPECT_EQ(ReadyFor(crowd.socket), "w");
    EXPECT_EQ(BytesAvailable(crowd.socket), 0U);
    EXPECT_TRUE(FailsWith(10035, TryReceive(crowd.socket)));
}

TEST_F(DatagramPeerQueue, IsClearedOfAnyNumberOfStrangers) {
    const Crowd crowd;
    for (int count = 0; count < 50; ++count)
        crowd.Hear(crowd.stranger, "strange");
    crowd.Hear(crowd.peer, "one");
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    EXPECT_EQ(BytesAvailable(crowd.socket), 3U);
    EXPECT_EQ(Receive(crowd.socket), "one");
}

TEST_F(DatagramPeerQueue, IsClearedThoughThatMeetsReports) {
    const Crowd crowd;
    crowd.Hear(crowd.stranger, "strange");
    crowd.Hear(crowd.stranger, "strange");
    crowd.Hear(crowd.peer, "one");
    {
        const SystemCalls::FailingCall meets(SystemCalls::SystemCall::Recv, ECONNREFUSED,
                                             {.count = 3});
        ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    }
    EXPECT_EQ(Receive(crowd.socket), "one");
}

TEST_F(DatagramPeerQueue, IsClearedOfThePeersNamesakes) {
    const Crowd crowd;
    const OwnedSocket samePort = NewDatagram();
    ASSERT_TRUE(Succeeds(Bind(samePort, Ipv4(127, 0, 0, 2, LocalPort(crowd.peer)))));
    crowd.Hear(samePort, "strange");
    crowd.Hear(crowd.peer, "one");
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    EXPECT_EQ(Receive(crowd.socket), "one");
}

TEST_F(DatagramPeerQueue, IsClearedOfEmptyAndLongDatagrams) {
    const Crowd crowd;
    crowd.Hear(crowd.peer, "long");
    crowd.Hear(crowd.stranger, "");
    crowd.Hear(crowd.peer, "");
    crowd.Hear(crowd.stranger, std::string(60000, 'x'));
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    EXPECT_TRUE(FailsWith(10040, TryReceive(crowd.socket, 2)));
    EXPECT_TRUE(Succeeds(TryReceive(crowd.socket)));
    EXPECT_TRUE(FailsWith(10035, TryReceive(crowd.socket)));
}

TEST_F(DatagramPeerQueue, IsForEverybodyAgainWhenThePeerIsTakenAway) {
    const Crowd crowd;
    crowd.Hear(crowd.peer, "one");
    crowd.Hear(crowd.stranger, "strange");
    crowd.Hear(crowd.peer, "two");
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, Ipv4(0, 0, 0, 0, 0))));
    const SystemCalls::CountedCall questions(SystemCalls::SystemCall::Getpeername);
    EXPECT_EQ(Receive(crowd.socket), "one");
    EXPECT_EQ(Receive(crowd.socket), "strange");
    EXPECT_EQ(Receive(crowd.socket), "two");
    EXPECT_EQ(questions.Seen(), 0U);
}

// Of the kernel's reports, too, none is lost.
TEST_F(DatagramPeerQueue, IsClearedBehindReports) {
    const Crowd crowd;
    const Winsock::AddressIpv4 nobody = LocalAddress(NewBoundDatagram());
    crowd.Hear(crowd.stranger, "strange");
    ASSERT_TRUE(Succeeds(SendTo(crowd.socket, "anybody?", nobody), 8));
    AwaitEnd(crowd.socket.Get());
    ASSERT_TRUE(Succeeds(Connect(crowd.socket, LocalAddress(crowd.peer))));
    crowd.Hear(crowd.peer, "answer");
    EXPECT_TRUE(FailsWith(10054, TryReceive(crowd.socket)));
    EXPECT_EQ(Receive(crowd.socket), "answer");
    EXPECT_TRUE(FailsWith(10035, TryReceive(crowd.socket)));
}

using DatagramPeerThatWasFormer = Started;

TEST_F(DatagramPeerThatWasFormer, StaysWhenTheNewOneCannotBe) {
    const OwnedSocket peer = NewReceiver();
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    ASSERT_TRUE(FailsWith(10049, Connect(socket, Loopback(0))));
    ASSERT_TRUE(FailsWith(10049, Connect(socket, Ipv4(0, 0, 0, 0, 9))));
    EXPECT_TRUE(Succeeds(Send(socket, "still here"), 10));
    EXPECT_EQ(Receive(peer), "still here");
}

TEST_F(DatagramPeerThatWasFormer, IsGoneWhenThereIsNoWayToTheNewOne) {
    const OwnedSocket peer = NewReceiver();
    const OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    const unsigned int port = LocalPort(socket);
    ASSERT_TRUE(FailsWith(10013, Connect(socket, Ipv4(255, 255, 255, 255, 9))));
    EXPECT_TRUE(FailsWith(10057, Send(socket, "nobody"), ""));
    EXPECT_EQ(LocalPort(socket), port);
}

using DatagramPeerSource = Started;

using Bytes = std::array<unsigned char, 16>;
constexpr Bytes GlobalBytes = {0x20, 1, 0xD, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr Bytes LinkBytes = {0xFE, 0x80, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

Winsock::AddressIpv6 Ipv6(const Bytes& bytes, unsigned int port) {
    Winsock::AddressIpv6 address = LoopbackIpv6(port);
    std::memcpy(address.address, bytes.data(), bytes.size());
    if (bytes == LinkBytes) address.scope = ::if_nametoindex("lo");
    return address;
}

bool Ask(const OwnedSocket& socket, unsigned long request, void* argument) {
    return ::ioctl(static_cast<int>(socket.Get()), request, argument) == 0;
}

// These give the loopback interface addresses of its own.
bool AddAddress(const Winsock::AddressIpv4& address) {
    ifreq request = {};
    std::strcpy(request.ifr_name, "lo:1");
    std::memcpy(&request.ifr_addr, &address, sizeof address);
    return Ask(NewDatagram(), SIOCSIFADDR, &request);
}
// The system takes its time with those of IPv6.
bool AddAddress(const Bytes& bytes) {
    struct {
        in6_addr address;
        std::uint32_t prefix;
        unsigned int interface;
    } request = {{}, 128, ::if_nametoindex("lo")};
    std::memcpy(&request.address, bytes.data(), bytes.size());
    const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
    return Ask(socket, SIOCSIFADDR, &request) &&
           RepeatWhile(10049, [&] { return Bind(socket, Ipv6(bytes, 0)); }) == 0;
}

bool IsAt(const OwnedSocket& socket, const Winsock::AddressIpv4& expected) {
    const Winsock::AddressIpv4 address = LocalAddress(socket);
    return std::memcmp(&address, &expected, sizeof address) == 0;
}
bool IsAt(const OwnedSocket& socket, const Winsock::AddressIpv6& expected) {
    const Winsock::AddressIpv6 address = LocalIpv6Address(socket);
    return std::memcmp(&address, &expected, sizeof address) == 0;
}

TEST_F(DatagramPeerSource, IsChosenAnewForAnotherPeer) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(Ipv4(192, 0, 2, 1, 0)));
        const OwnedSocket socket = NewDatagram();
        EXPECT_TRUE(Succeeds(Connect(socket, Loopback(9))));
        const unsigned int port = LocalPort(socket);
        EXPECT_TRUE(IsAt(socket, Loopback(port)));
        EXPECT_TRUE(Succeeds(Connect(socket, Ipv4(192, 0, 2, 1, 9))));
        EXPECT_TRUE(IsAt(socket, Ipv4(192, 0, 2, 1, port)));
        EXPECT_TRUE(Succeeds(Connect(socket, Loopback(9))));
        EXPECT_TRUE(IsAt(socket, Loopback(port)));
    });
}

TEST_F(DatagramPeerSource, IsChosenAnewForAnotherPeerOfIpv6) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(GlobalBytes));
        const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
        ASSERT_TRUE(Succeeds(Bind(socket, Ipv6({}, 4711))));
        EXPECT_TRUE(Succeeds(Connect(socket, LoopbackIpv6(9))));
        EXPECT_TRUE(IsAt(socket, LoopbackIpv6(4711)));
        EXPECT_TRUE(Succeeds(Connect(socket, Ipv6(GlobalBytes, 9))));
        EXPECT_TRUE(IsAt(socket, Ipv6(GlobalBytes, 4711)));
    });
}

// What bind was given stays whatever the peer is, and when it was removed.
template <typename Address>
void ExpectToStay(const Address& local, const Address& peer, const Address& nobody) {
    const OwnedSocket socket = NewDatagram(local.family);
    ASSERT_TRUE(Succeeds(Bind(socket, local)));
    Winsock::AddressStorage bound = {};
    int length = sizeof bound;
    ASSERT_EQ(Winsock::getsockname(socket.Get(), &bound, &length), 0);
    Address address = {};
    std::memcpy(&address, &bound, sizeof address);
    for (const Address& next : {peer, address, nobody}) {
        EXPECT_TRUE(Succeeds(Connect(socket, next)));
        EXPECT_TRUE(IsAt(socket, address));
    }
}

TEST_F(DatagramPeerSource, ThatBindWasGivenStays) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(Ipv4(192, 0, 2, 1, 0)));
        for (const unsigned int port : {0U, 4711U})
            ExpectToStay(Ipv4(192, 0, 2, 1, port), Loopback(9), Ipv4(0, 0, 0, 0, 0));
    });
}

TEST_F(DatagramPeerSource, ThatBindWasGivenStaysInIpv6) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(GlobalBytes));
        for (const unsigned int port : {0U, 4711U})
            ExpectToStay(Ipv6(GlobalBytes, port), Ipv6(GlobalBytes, 9), Ipv6({}, 0));
    });
}

TEST_F(DatagramPeerSource, OfAllAddressesIsTiedToNoLinkWhenThePeerIsTakenAway) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(LinkBytes));
        const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
        ASSERT_TRUE(Succeeds(Bind(socket, Ipv6({}, 4711))));
        ASSERT_TRUE(Succeeds(Connect(socket, Ipv6(LinkBytes, 9))));
        ASSERT_TRUE(Succeeds(Connect(socket, Ipv6({}, 0))));
        int link = -1;
        socklen_t length = sizeof link;
        ASSERT_EQ(::getsockopt(static_cast<int>(socket.Get()), SOL_SOCKET, SO_BINDTOIFINDEX, &link,
                               &length),
                  0);
        EXPECT_EQ(link, 0);
    });
}

TEST_F(DatagramPeerSource, ThatBindWasGivenStaysOnItsLink) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(LinkBytes));
        for (const unsigned int port : {0U, 4711U}) {
            ExpectToStay(Ipv6(LinkBytes, port), Ipv6(LinkBytes, 9), Ipv6({}, 0));
        }
    });
}

TEST_F(DatagramPeerSource, ThatBindWasGivenStaysWhereThereIsNoLink) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(GlobalBytes));
        for (const unsigned int port : {0U, 4711U})
            ExpectToStay(Ipv6(GlobalBytes, port), LoopbackIpv6(9), Ipv6({}, 0));
    });
}

TEST_F(DatagramPeerSource, ThatCannotStayOnItsLinkIsToldOf) {
    InOwnNetwork([] {
        ASSERT_TRUE(AddAddress(LinkBytes));
        const OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
        ASSERT_TRUE(Succeeds(Bind(socket, Ipv6(LinkBytes, 4711))));
        ASSERT_TRUE(Succeeds(Connect(socket, Ipv6(LinkBytes, 9))));
        {
            const SystemCalls::FailingCall fails(SystemCalls::SystemCall::Setsockopt, EPERM);
            EXPECT_TRUE(FailsWith(10013, Connect(socket, Ipv6({}, 0))));
            EXPECT_EQ(fails.Seen(), 1U);
        }
        Winsock::AddressIpv6 address = Ipv6(LinkBytes, 4711);
        address.scope = 0;
        EXPECT_TRUE(IsAt(socket, address));
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
    });
}

}  // namespace
}  // namespace Conformance
