// Connects and waits that the system fails or interrupts.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;
using Winsock::HandleSet;

struct Row {
    int system;
    int winsock;
};

constexpr Row OfConnects[] = {
    {EACCES, 10013},       {EPERM, 10013},     {EFAULT, 10014},       {EADDRINUSE, 10048},
    {EAFNOSUPPORT, 10047}, {ENETDOWN, 10050},  {ENETUNREACH, 10051},  {ENOBUFS, 10055},
    {ENOMEM, 10055},       {ETIMEDOUT, 10060}, {ECONNREFUSED, 10061}, {EHOSTDOWN, 10064},
    {EHOSTUNREACH, 10065}, {EBADF, 10038},     {ESTALE, 10070},       {EDQUOT, 10069},
};

using WaitFaultInConnect = Started;

TEST_F(WaitFaultInConnect, OfAStreamIsToldAndTheNextConnectSucceeds) {
    const OwnedSocket listener = NewListener();
    for (const Row& row : OfConnects) {
        const OwnedSocket socket = NewStream();
        {
            const FailingCall fails(SystemCall::Connect, row.system);
            EXPECT_TRUE(FailsWith(row.winsock, Connect(socket, LocalAddress(listener))))
                << strerror(row.system);
        }
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x"))) << strerror(row.system);
        EXPECT_EQ(ReadyFor(socket), "") << strerror(row.system);
        EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener)))) << strerror(row.system);
        EXPECT_TRUE(Succeeds(Send(socket, "x"), 1)) << strerror(row.system);
    }
}

TEST_F(WaitFaultInConnect, OfADatagramSocketIsToldAndLeavesItWithoutAPeer) {
    const OwnedSocket peer = NewBoundDatagram();
    for (const Row& row : OfConnects) {
        const OwnedSocket socket = NewDatagram();
        const FailingCall fails(SystemCall::Connect, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Connect(socket, LocalAddress(peer))))
            << strerror(row.system);
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x"))) << strerror(row.system);
    }
}

// Nothing here is in the way, as a datagram socket's connect shows.
TEST_F(WaitFaultInConnect, ThatARouterForbidsIsAHostOutOfReach) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    const FailingCall fails(SystemCall::Connect, EACCES, {.count = 1});
    EXPECT_TRUE(FailsWith(10065, Connect(socket, LocalAddress(listener))));
}

// The system reports a failed connect again; the next call acts.
TEST_F(WaitFaultInConnect, OfAnEarlierConnectIsNotTheNextOnes) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    const FailingCall fails(SystemCall::Connect, ECONNABORTED, {.count = 1});
    EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(fails.Seen(), 2U);
}

TEST_F(WaitFaultInConnect, ThatTheSystemTellsAgainIsOne) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    const FailingCall fails(SystemCall::Connect, ECONNABORTED);
    EXPECT_TRUE(FailsWith(10053, Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(fails.Seen(), 3U);  // the last one lets go of the peer
}

TEST_F(WaitFaultInConnect, OfASignalIsNone) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    const HookedCall interrupted(SystemCall::Connect, [](const Call& call) {
        call.Make();
        return call.Fail(EINTR);
    });
    EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(interrupted.Seen(), 1U);
    EXPECT_TRUE(Succeeds(Send(socket, "x"), 1));
}

TEST_F(WaitFaultInConnect, OfTheWaitLeavesTheConnectUnfinished) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    // Makes the system's connect return unfinished.
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, 10)));
    {
        const FailingCall fails(SystemCall::Ppoll, ENOMEM);
        EXPECT_TRUE(FailsWith(10055, Connect(socket, Loopback(listener.Port()))));
    }
    EXPECT_TRUE(FailsWith(10037, Connect(socket, Loopback(listener.Port()))));
    listener.Drain();
    EXPECT_EQ(RepeatWhile(10057, [&] { return Send(socket, "x"); }), 1);
}

using WaitFaultInSelect = Started;

TEST_F(WaitFaultInSelect, LeavesTheSetsAlone) {
    const Pair pair = NewConnectedPair();
    for (const Row& row : {Row{ENOMEM, 10055}, Row{EINVAL, 10022}, Row{EFAULT, 10014}}) {
        HandleSet read = SetOf({pair.server.Get()});
        HandleSet write = SetOf({pair.client.Get(), pair.server.Get()});
        const FailingCall fails(SystemCall::Ppoll, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Winsock::select(0, &read, &write, nullptr, &Minute)));
        EXPECT_EQ(read.count, 1U);
        EXPECT_EQ(write.count, 2U);
    }
}

// As if something else in the process had closed the socket's descriptor.
TEST_F(WaitFaultInSelect, OfADescriptorThatIsGoneIsASocketThatIsNone) {
    const Pair pair = NewConnectedPair();
    HandleSet read = SetOf({pair.server.Get()});
    const HookedCall gone(SystemCall::Ppoll, [](const Call& call) {
        call.Pointer<pollfd>(0)->revents = POLLNVAL;
        return Word{1};
    });
    EXPECT_TRUE(FailsWith(10038, Winsock::select(0, &read, nullptr, nullptr, &Minute)));
    EXPECT_EQ(read.count, 1U);
}

TEST_F(WaitFaultInSelect, OfASignalIsNone) {
    const Pair pair = NewConnectedPair();
    const FailingCall interrupted(SystemCall::Ppoll, EINTR, {.count = 3});
    EXPECT_EQ(ReadyFor(pair.server, Minute), "w");
    EXPECT_GE(interrupted.Seen(), 4U);
}

TEST_F(WaitFaultInSelect, OfSignalsWithoutEndEndsInTime) {
    const OwnedSocket socket = NewBoundDatagram();
    HandleSet read = SetOf({socket.Get()});
    const Winsock::TimeValue time = {0, 40'000};
    const FailingCall interrupted(SystemCall::Ppoll, EINTR, {.count = 1'000'000});
    EXPECT_GE(TimeOf([&] {
                  EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &time), 0));
              }),
              Milliseconds(40));
    EXPECT_EQ(read.count, 0U);
}

using WaitFaultAlready = Started;

OwnedSocket WithALossToTell() {
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    OwnedSocket socket = NewBoundDatagram();
    SetNonBlocking(socket);
    EXPECT_EQ(SendTo(socket, "anybody?", nobody), 8);
    AwaitEnd(socket.Get());
    EXPECT_TRUE(IsReadable(socket, AtOnce));
    return socket;
}

// The system knows nothing any more of what has been counted.
TEST_F(WaitFaultAlready, OfWhatIsReadyThereIsNone) {
    const OwnedSocket socket = WithALossToTell();
    HandleSet read = SetOf({socket.Get()});
    const HookedCall waits(SystemCall::Ppoll, [](const Call& call) {
        EXPECT_LT(call.Pointer<pollfd>(0)->fd, 0);
        return call.Make();
    });
    EXPECT_LT(TimeOf([&] {
                  EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &Minute), 1));
              }),
              Milliseconds(20'000));
    EXPECT_EQ(waits.Seen(), 1U);
}

TEST_F(WaitFaultAlready, OfWhatCanBeReadIsNoReportLookedFor) {
    const OwnedSocket socket = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SendTo(socket, "x", LocalAddress(socket)), 1));
    const CountedCall looks(SystemCall::Recvmsg);
    EXPECT_EQ(ReadyFor(socket, Minute), "rw");
    EXPECT_EQ(looks.Seen(), 0U);
}

// What the system says of a stream without a connection lasts.
TEST_F(WaitFaultAlready, OfWhatWillNotChangeThereIsNoSecond) {
    const OwnedSocket socket = NewStream();
    unsigned int waits = 0;
    const HookedCall counts(SystemCall::Ppoll, [&waits](const Call& call) {
        if (++waits > 1) {
            EXPECT_LT(call.Pointer<pollfd>(0)->fd, 0);
        }
        return call.Make();
    });
    EXPECT_EQ(ReadyFor(socket, {0, 50'000}), "");
    EXPECT_GE(waits, 2U);
}

TEST_F(WaitFaultAlready, OfWhatMayChangeOneIsEnough) {
    const OwnedSocket socket = NewBoundDatagram();
    HandleSet read = SetOf({socket.Get()});
    const Winsock::TimeValue time = {0, 50'000};
    const CountedCall waits(SystemCall::Ppoll);
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &time), 0));
    EXPECT_LE(waits.Seen(), 2U);
}

// By whoever else has the number.
TEST_F(WaitFaultAlready, OfADescriptorThatIsClosedIsToldAsNoSocket) {
    const OwnedSocket socket = NewBoundDatagram();
    const OwnedSocket other = NewBoundDatagram();
    const int number = static_cast<int>(socket.Get());
    const int kept = ::fcntl(number, F_DUPFD_CLOEXEC, 0);
    ::close(number);
    HandleSet read = SetOf({other.Get(), socket.Get()});
    EXPECT_TRUE(FailsWith(10038, Winsock::select(0, &read, nullptr, nullptr, &Minute)));
    EXPECT_EQ(read.count, 2U);
    ::dup3(kept, number, O_CLOEXEC);
    ::close(kept);
}

}  // namespace
}  // namespace Conformance
