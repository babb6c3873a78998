// Broadcasts to sockets that are bound to an address of an interface, in a network of the test's
// own.
#include <linux/sockios.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

#include "OwnNetwork.h"
#include "TakenAddress.h"
#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/FailingAllocations.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

using BroadcastOwnAddress = Started;

constexpr const char* Interface = "wire";

Winsock::AddressIpv4 Address(unsigned int port) {
    return Ipv4(192, 0, 2, 1, port);
}

bool Ask(unsigned long request, void* argument) {
    return ::ioctl(static_cast<int>(NewDatagram().Get()), request, argument) == 0;
}

bool SetAddress(unsigned long request, const Winsock::AddressIpv4& address,
                const char* interface = Interface) {
    ifreq argument = {};
    std::strcpy(argument.ifr_name, interface);
    std::memcpy(&argument.ifr_addr, &address, sizeof address);
    return Ask(request, &argument);
}

bool SwitchOn() {
    ifreq argument = {};
    std::strcpy(argument.ifr_name, Interface);
    argument.ifr_flags = IFF_UP;
    return Ask(SIOCSIFFLAGS, &argument);
}

// A bridge that leads nowhere: the simplest interface that broadcasts.
bool MakeInterface() {
    std::string name = Interface;
    return Ask(SIOCBRADDBR, name.data()) && SetAddress(SIOCSIFADDR, Address(0)) &&
           SetAddress(SIOCSIFNETMASK, Ipv4(255, 255, 255, 0, 0)) && SwitchOn();
}

void OnAnInterface(const std::function<void()>& scene) {
    InOwnNetwork([&] {
        ASSERT_TRUE(MakeInterface()) << "no bridge: " << std::strerror(errno);
        scene();
    });
}

OwnedSocket NewSender() {
    OwnedSocket socket = NewDatagram();
    EXPECT_EQ(SetOption(socket, Winsock::OptionBroadcast, 1), 0);
    EXPECT_EQ(Bind(socket, Address(0)), 0);
    return socket;
}

OwnedSocket NewReceiver() {
    OwnedSocket socket = NewDatagram();
    EXPECT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
    return socket;
}

void ExpectBroadcasts(const OwnedSocket& receiver) {
    const unsigned int port = LocalPort(receiver);
    const OwnedSocket sender = NewSender();
    EXPECT_EQ(SendTo(sender, "to the network", Ipv4(192, 0, 2, 255, port)), 14);
    EXPECT_EQ(Receive(receiver), "to the network");
    EXPECT_EQ(SendTo(sender, "to all", Ipv4(255, 255, 255, 255, port)), 6);
    EXPECT_EQ(Receive(receiver), "to all");
    EXPECT_EQ(SendTo(sender, "to one", Address(port)), 6);
    EXPECT_EQ(Receive(receiver), "to one");
}

TEST_F(BroadcastOwnAddress, ReceivesBroadcasts) {
    OnAnInterface([] {
        const OwnedSocket receiver = NewReceiver();
        ASSERT_TRUE(Succeeds(Bind(receiver, Address(0))));
        EXPECT_EQ(LocalAddress(receiver).address[0], 192);
        EXPECT_EQ(LocalAddress(receiver).address[3], 1);
        ExpectBroadcasts(receiver);
    });
}

TEST_F(BroadcastOwnAddress, FailsToBeBoundWithoutDescriptorsAndIsBoundLater) {
    OnAnInterface([] {
        const OwnedSocket receiver = NewReceiver();
        {
            const DescriptorLimit limit(DescriptorLimit::Exhausting());
            ASSERT_TRUE(limit.IsSet());
            EXPECT_TRUE(FailsWith(10024, Bind(receiver, Address(0))));
        }
        ASSERT_TRUE(Succeeds(Bind(receiver, Address(0))));
        ExpectBroadcasts(receiver);
    });
}

int BindWithoutMemory(const OwnedSocket& socket, unsigned int successes) {
    const Support::FailingAllocations failing(successes);
    return Bind(socket, Address(0));
}

TEST_F(BroadcastOwnAddress, FailsToBeBoundWithoutMemoryAndIsBoundLater) {
    OnAnInterface([] {
        const OwnedSocket receiver = NewReceiver();
        unsigned int allocations = 0;
        while (BindWithoutMemory(receiver, allocations) != 0) {
            ASSERT_EQ(Winsock::WSAGetLastError(), 10055);
            ASSERT_LT(++allocations, 30U);
        }
        EXPECT_GT(allocations, 0U);
        ExpectBroadcasts(receiver);
    });
}

TEST_F(BroadcastOwnAddress, FailsToBeBoundWhereTheSystemRefusesAnOption) {
    OnAnInterface([] {
        for (const int option : {SO_REUSEADDR, SO_TIMESTAMPNS, IP_MULTICAST_ALL}) {
            const OwnedSocket receiver = NewReceiver();
            {
                const FailingCall fails(SystemCall::Setsockopt, ENOBUFS, {.option = option});
                EXPECT_TRUE(FailsWith(10055, Bind(receiver, Address(0)))) << option;
            }
            ASSERT_TRUE(Succeeds(Bind(receiver, Address(0))));
            ExpectBroadcasts(receiver);
        }
    });
}

// How many sockets of the system it takes to be bound to the address and to hear its broadcasts.
unsigned int SocketsToBind(const Winsock::AddressIpv4& address) {
    const OwnedSocket receiver = NewReceiver();
    const CountedCall others(SystemCall::Socket);
    EXPECT_TRUE(Succeeds(Bind(receiver, address)));
    const unsigned int count = others.Seen() + 1;
    const OwnedSocket sender = NewDatagram();
    EXPECT_EQ(SendTo(sender, "to one", LocalAddress(receiver)), 6);
    EXPECT_EQ(Receive(receiver), "to one");
    return count;
}

TEST_F(BroadcastOwnAddress, TakesASocketMoreForEachBroadcastAddressThatThereIs) {
    OnAnInterface([] {
        EXPECT_EQ(SocketsToBind(Address(0)), 3U);
        // Networks of one address, of two, and of all.
        for (const int last : {0xFF, 0xFE}) {
            ASSERT_TRUE(SetAddress(SIOCSIFNETMASK,
                                   Ipv4(255, 255, 255, static_cast<unsigned char>(last), 0)));
            EXPECT_EQ(SocketsToBind(Address(0)), 2U) << last;
        }
        ASSERT_TRUE(SetAddress(SIOCSIFNETMASK, Ipv4(0, 0, 0, 0, 0)));
        EXPECT_EQ(SocketsToBind(Address(0)), 2U);
    });
}

TEST_F(BroadcastOwnAddress, MayBeOfAnyNetwork) {
    OnAnInterface([] {
        ASSERT_TRUE(SetAddress(SIOCSIFADDR, Ipv4(10, 0, 0, 1, 0)));
        EXPECT_EQ(SocketsToBind(Ipv4(10, 0, 0, 1, 0)), 3U);
    });
}

TEST_F(BroadcastOwnAddress, IsNotLookedForWhereThereAreNoBroadcasts) {
    const CountedCall questions(SystemCall::Ioctl);
    EXPECT_TRUE(Succeeds(Bind(NewDatagram(), Loopback(0))));
    EXPECT_TRUE(Succeeds(Bind(NewDatagram(), Ipv4(0, 0, 0, 0, 0))));
    EXPECT_TRUE(Succeeds(Bind(NewDatagram(Winsock::FamilyIpv6), LoopbackIpv6(0))));
    EXPECT_EQ(questions.Seen(), 0U);
}

TEST_F(BroadcastOwnAddress, TakesOneSocketOnAnInterfaceWithoutBroadcasts) {
    InOwnNetwork([] {
        ASSERT_TRUE(SetAddress(SIOCSIFADDR, Address(0), "lo"));
        EXPECT_EQ(SocketsToBind(Address(0)), 1U);
    });
}

// An interface may go while it is asked.
TEST_F(BroadcastOwnAddress, IsBoundThoughTheSystemDoesNotTellOfItsInterface) {
    OnAnInterface([] {
        for (const int request : {SIOCGIFCONF, SIOCGIFFLAGS, SIOCGIFINDEX}) {
            const FailingCall fails(SystemCall::Ioctl, ENODEV, {.option = request});
            EXPECT_EQ(SocketsToBind(Address(0)), 1U) << request;
        }
        const FailingCall fails(SystemCall::Ioctl, ENODEV, {.option = SIOCGIFNETMASK});
        EXPECT_EQ(SocketsToBind(Address(0)), 2U);
        const FailingCall later(SystemCall::Ioctl, ENODEV, {.first = 2, .option = SIOCGIFCONF});
        EXPECT_EQ(SocketsToBind(Address(0)), 1U);
    });
}

// Another program may have it, and keeps it.
TEST_F(BroadcastOwnAddress, IsBoundThoughTheBroadcastAddressIsTaken) {
    OnAnInterface([] {
        for (const Winsock::AddressIpv4& broadcast :
             {Ipv4(192, 0, 2, 255, 0), Ipv4(255, 255, 255, 255, 0)}) {
            const TakenAddress taken(broadcast);
            const OwnedSocket receiver = NewReceiver();
            ASSERT_TRUE(Succeeds(Bind(receiver, Address(taken.Port()))));
            EXPECT_EQ(SendTo(NewSender(), "to one", LocalAddress(receiver)), 6);
            EXPECT_EQ(Receive(receiver), "to one");
        }
    });
}

// What was made for the refused address is no burden on the next one.
TEST_F(BroadcastOwnAddress, IsBoundElsewhereAfterARefusal) {
    OnAnInterface([] {
        const OwnedSocket former = NewReceiver();
        ASSERT_TRUE(Succeeds(Bind(former, Address(0))));
        const OwnedSocket receiver = NewReceiver();
        EXPECT_TRUE(FailsWith(10048, Bind(receiver, LocalAddress(former))));
        ASSERT_TRUE(Succeeds(Bind(receiver, Address(0))));
        ExpectBroadcasts(receiver);
        ExpectBroadcasts(former);
    });
}

}  // namespace
}  // namespace Conformance
