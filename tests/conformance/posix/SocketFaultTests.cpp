// Sockets that the system refuses to make, bind, name, listen with or close.
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "ClosedStandardStreams.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

int Number(const OwnedSocket& socket) {
    return static_cast<int>(socket.Get());
}

bool IsOpenDescriptor(int descriptor) {
    return ::fcntl(descriptor, F_GETFD) >= 0;
}

using SocketFaultInCreation = Started;

// Each option that a new socket is given, refused in turn; the descriptor is given back.
void ExpectEachOptionNeeded(int family, int type) {
    unsigned int options = 0;
    {
        const CountedCall count(SystemCall::Setsockopt);
        EXPECT_TRUE(IsOpen(OwnedSocket(Winsock::socket(family, type, 0)).Get()));
        options = count.Seen();
    }
    for (unsigned int refused = 1; refused <= options; ++refused) {
        int descriptor = -1;
        const HookedCall fails(SystemCall::Setsockopt,
                               [&descriptor](const Call& call) {
                                   descriptor = static_cast<int>(call.Argument(0));
                                   return call.Fail(ENOBUFS);
                               },
                               {.first = refused, .count = 1});
        EXPECT_TRUE(FailsWith(10055, Winsock::socket(family, type, 0))) << refused;
        EXPECT_GE(descriptor, 0);
        EXPECT_FALSE(IsOpenDescriptor(descriptor)) << refused;
    }
}

TEST_F(SocketFaultInCreation, OfAnOptionLeavesNoSocketThatAnswersOtherwise) {
    for (const int family : {Winsock::FamilyIpv4, Winsock::FamilyIpv6}) {
        ExpectEachOptionNeeded(family, Winsock::TypeStream);
        ExpectEachOptionNeeded(family, Winsock::TypeDatagram);
    }
}

TEST_F(SocketFaultInCreation, OfAnyKindLeavesNothingBehind) {
    const FailingCall fails(SystemCall::Socket, ENFILE);
    const CountedCall closes(SystemCall::Close);
    const CountedCall options(SystemCall::Setsockopt);
    EXPECT_TRUE(FailsWith(10024, Winsock::socket(2, 1, 0)));
    EXPECT_TRUE(FailsWith(10024, Winsock::socket(23, 2, 0)));
    EXPECT_EQ(closes.Seen(), 0U);
    EXPECT_EQ(options.Seen(), 0U);
}

TEST_F(SocketFaultInCreation, OfTheMoveAboveTheStandardStreamsIsOne) {
    unsigned int moves = 0;
    int result = 0;
    int inUse = -1;
    {
        const ClosedStandardStreams closed;
        const FailingCall fails(SystemCall::Fcntl, EMFILE, {.option = F_DUPFD_CLOEXEC});
        const OwnedSocket socket(Winsock::socket(2, 1, 0));
        result = socket.Get() == Winsock::InvalidSocket ? Winsock::SocketError : 0;
        inUse = ClosedStandardStreams::InUse();
        moves = fails.Seen();
    }
    EXPECT_TRUE(FailsWith(10024, result));
    EXPECT_EQ(inUse, 0);
    EXPECT_EQ(moves, 1U);
}

// The table of sockets has an end.
TEST_F(SocketFaultInCreation, OfANumberThatIsTooLargeGivesItBack) {
    constexpr Word tooLarge = 1 << 20U;
    const HookedCall makes(SystemCall::Socket, [](const Call&) { return tooLarge; });
    const HookedCall set(SystemCall::Setsockopt, [](const Call&) { return 0; });
    Word closed = -1;
    const HookedCall closes(SystemCall::Close, [&closed](const Call& call) {
        closed = call.Argument(0);
        return 0;
    });
    EXPECT_TRUE(FailsWith(10024, Winsock::socket(2, 1, 0)));
    EXPECT_EQ(closed, tooLarge);
}

using SocketFaultInBind = Started;

TEST_F(SocketFaultInBind, ThatIsNoTakenPortIsNoneForASocketWithReuseEither) {
    const OwnedSocket socket = NewStream();
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    EXPECT_TRUE(FailsWith(10049, Bind(socket, Ipv4(192, 0, 2, 1, 0))));
    {
        const FailingCall fails(SystemCall::Bind, EACCES);
        EXPECT_TRUE(FailsWith(10013, Bind(socket, Loopback(0))));
    }
    const FailingCall fails(SystemCall::Bind, ENOMEM);
    EXPECT_TRUE(FailsWith(10055, Bind(socket, Loopback(4711))));
}

TEST_F(SocketFaultInBind, LeavesTheSocketUnbound) {
    const OwnedSocket socket = NewStream();
    {
        const FailingCall fails(SystemCall::Bind, ENOMEM);
        EXPECT_TRUE(FailsWith(10055, Bind(socket, Loopback(0))));
        EXPECT_EQ(fails.Seen(), 1U);
    }
    EXPECT_TRUE(FailsWith(10022, Winsock::listen(socket.Get(), 1)));
    EXPECT_TRUE(Succeeds(Bind(socket, Loopback(0))));
}

TEST_F(SocketFaultInBind, OfASecondTryIsTheOneThatIsTold) {
    const OwnedSocket socket = NewStream();
    const FailingCall later(SystemCall::Bind, ENOMEM, {.first = 2});
    const FailingCall first(SystemCall::Bind, EADDRINUSE, {.count = 1});
    const FailingCall reuse(SystemCall::Setsockopt, EPERM, {.first = 2});
    EXPECT_TRUE(FailsWith(10055, Bind(socket, Loopback(0))));
}

using SocketFaultInName = Started;

template <typename Query>
void ExpectFailureThatLeavesTheRoomAlone(int error, Query query, const OwnedSocket& socket) {
    Winsock::AddressIpv4 address = Ipv4(9, 9, 9, 9, 99);
    int length = 100;
    EXPECT_TRUE(FailsWith(error, query(socket.Get(), &address, &length)));
    EXPECT_EQ(address.address[0], 9);
    EXPECT_EQ(length, 100);
}

TEST_F(SocketFaultInName, LeavesTheRoomAlone) {
    const Pair pair = NewConnectedPair();
    const OwnedSocket datagram = NewBoundDatagram();
    const FailingCall own(SystemCall::Getsockname, ENOBUFS);
    ExpectFailureThatLeavesTheRoomAlone(10055, Winsock::getsockname, pair.client);
    ExpectFailureThatLeavesTheRoomAlone(10055, Winsock::getsockname, datagram);
    const FailingCall peers(SystemCall::Getpeername, ENOBUFS);
    ExpectFailureThatLeavesTheRoomAlone(10055, Winsock::getpeername, pair.client);
}

TEST_F(SocketFaultInName, OfAPeerThatIsGoneIsNoPeer) {
    const Pair pair = NewConnectedPair();
    const FailingCall fails(SystemCall::Getpeername, ENOTCONN);
    ExpectFailureThatLeavesTheRoomAlone(10057, Winsock::getpeername, pair.client);
}

TEST_F(SocketFaultInName, OfAPeerThatIsNotThereYetIsTold) {
    const FullListener listener;
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, Loopback(listener.Port()))));
    const FailingCall fails(SystemCall::Getsockopt, ENOTCONN, {.option = SO_PEERNAME});
    ExpectFailureThatLeavesTheRoomAlone(10057, Winsock::getpeername, socket);
}

using SocketFaultInListen = Started;

TEST_F(SocketFaultInListen, LeavesNoListener) {
    const OwnedSocket socket = NewBoundStream();
    {
        const FailingCall fails(SystemCall::Listen, EADDRINUSE);
        EXPECT_TRUE(FailsWith(10048, Winsock::listen(socket.Get(), 1)));
    }
    EXPECT_TRUE(FailsWith(10022, Winsock::accept(socket.Get(), nullptr, nullptr)));
    EXPECT_TRUE(FindsPortTakenThoughReusing(LocalPort(socket)));
    EXPECT_TRUE(Succeeds(Winsock::listen(socket.Get(), 1)));
}

bool MayReuse(const OwnedSocket& socket) {
    int reuse = 0;
    socklen_t length = sizeof reuse;
    EXPECT_EQ(::getsockopt(Number(socket), SOL_SOCKET, SO_REUSEADDR, &reuse, &length), 0);
    return reuse != 0;
}

// The connections that it accepts have the option from it.
TEST_F(SocketFaultInListen, LeavesAListenerItsPortBesideEndedConnections) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket none = NewBoundStream();
    const FailingCall fails(SystemCall::Listen, ENOMEM);
    EXPECT_TRUE(FailsWith(10055, Winsock::listen(listener.Get(), 1)));
    EXPECT_TRUE(FailsWith(10055, Winsock::listen(none.Get(), 1)));
    EXPECT_TRUE(MayReuse(listener));
    EXPECT_FALSE(MayReuse(none));
}

using SocketFaultInAccept = Started;

struct Waiting {
    OwnedSocket listener = NewListener();
    OwnedSocket client = NewStream();

    Waiting() { EXPECT_TRUE(Succeeds(Connect(client, LocalAddress(listener)))); }
};

TEST_F(SocketFaultInAccept, OfAConnectionThatIsGoneIsTheNextOnesMatter) {
    const Waiting waiting;
    for (const int error : {ECONNABORTED, EPROTO, ENETDOWN, ENOPROTOOPT, EHOSTDOWN, ENONET,
                            EHOSTUNREACH, EOPNOTSUPP, ENETUNREACH, EINTR}) {
        const OwnedSocket client = NewStream();
        ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(waiting.listener))));
        const FailingCall fails(SystemCall::Accept4, error, {.count = 3});
        EXPECT_TRUE(
            IsOpen(OwnedSocket(Winsock::accept(waiting.listener.Get(), nullptr, nullptr)).Get()))
            << error;
        EXPECT_EQ(fails.Seen(), 4U);
    }
}

TEST_F(SocketFaultInAccept, OfTheListenerOrTheSystemIsTold) {
    const Waiting waiting;
    constexpr std::pair<int, int> rows[] = {{EMFILE, 10024}, {ENFILE, 10024}, {ENOBUFS, 10055},
                                            {ENOMEM, 10055}, {EPERM, 10013},  {EINVAL, 10022},
                                            {EFAULT, 10014}, {ENOSR, 10055},  {ETIMEDOUT, 10060}};
    for (const auto& [error, winsock] : rows) {
        Winsock::AddressIpv4 peer = Ipv4(9, 9, 9, 9, 99);
        int length = sizeof peer;
        const FailingCall fails(SystemCall::Accept4, error);
        EXPECT_TRUE(FailsWith(winsock, Winsock::accept(waiting.listener.Get(), &peer, &length)));
        EXPECT_EQ(peer.address[0], 9);
        EXPECT_EQ(fails.Seen(), 1U);
    }
    EXPECT_NE(Accept(waiting.listener).Get(), Winsock::InvalidSocket);
}

TEST_F(SocketFaultInAccept, OfTheWaitIsTold) {
    const OwnedSocket listener = NewListener();
    const FailingCall nobody(SystemCall::Accept4, EAGAIN);
    const FailingCall fails(SystemCall::Ppoll, ENOMEM);
    EXPECT_TRUE(FailsWith(10055, Winsock::accept(listener.Get(), nullptr, nullptr)));
}

TEST_F(SocketFaultInAccept, OfANonBlockingListenerIsNotWaitedFor) {
    const OwnedSocket listener = NewListener();
    SetNonBlocking(listener);
    const FailingCall nobody(SystemCall::Accept4, EAGAIN);
    const CountedCall waits(SystemCall::Ppoll);
    EXPECT_TRUE(FailsWith(10035, Winsock::accept(listener.Get(), nullptr, nullptr)));
    EXPECT_EQ(waits.Seen(), 0U);
}

using SocketFaultInClose = Started;

// The system frees the number whatever it answers, and may have given it to somebody else since.
TEST_F(SocketFaultInClose, IsNoneAndIsNotRepeated) {
    for (const int error : {EIO, EINTR, ENOSPC, EDQUOT, EBADF}) {
        OwnedSocket socket = NewStream();
        const int descriptor = Number(socket);
        const HookedCall closes(SystemCall::Close, [error](const Call& call) {
            call.Make();
            return call.Fail(error);
        });
        EXPECT_TRUE(Succeeds(Winsock::closesocket(socket.Get()))) << error;
        EXPECT_EQ(closes.Seen(), 1U);
        EXPECT_FALSE(IsOpenDescriptor(descriptor));
        EXPECT_TRUE(FailsWith(10038, Winsock::closesocket(socket.Take())));
        EXPECT_EQ(closes.Seen(), 1U);
    }
}

TEST_F(SocketFaultInClose, LetsThePortBeBoundAgainWhateverTimeoutsThereWere) {
    for (const unsigned int timeout : {0U, 1000U}) {
        Pair pair = NewConnectedPair();
        ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionReceiveTimeout, timeout)));
        const CountedCall reuse(SystemCall::Setsockopt, {.option = SO_REUSEADDR});
        EXPECT_TRUE(Succeeds(Winsock::closesocket(pair.client.Take())));
        EXPECT_EQ(reuse.Seen(), 1U);
    }
}

TEST_F(SocketFaultInClose, DoesNotKeepTheLastCleanUpFromTheOthers) {
    Winsock::StartupData data;
    const OwnedSocket one = NewStream();
    const OwnedSocket other = NewDatagram();
    {
        const HookedCall closes(SystemCall::Close, [](const Call& call) {
            call.Make();
            return call.Fail(EIO);
        });
        EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
        EXPECT_EQ(closes.Seen(), 2U);
    }
    EXPECT_FALSE(IsOpenDescriptor(Number(one)));
    EXPECT_FALSE(IsOpenDescriptor(Number(other)));
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
}

}  // namespace
}  // namespace Conformance
