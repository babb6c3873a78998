// Transfers that the system fails, interrupts or cuts short.
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;
using Clock = std::chrono::steady_clock;

struct Row {
    int system;
    int winsock;
};

// What has to do with neither peer nor network, and so with no connection's end.
constexpr Row OfThisMachine[] = {
    {EPERM, 10013},  {EFAULT, 10014}, {EINVAL, 10022},   {ENOBUFS, 10055},
    {ENOMEM, 10055}, {EBADF, 10038},  {ENOTSOCK, 10038}, {ENETDOWN, 10050},
};

// A pipe is broken without the connection when this side has ended its half.
constexpr Row OfTheEnd[] = {
    {ECONNRESET, 10054},
    {ECONNABORTED, 10053},
    {EPIPE, 10058},
    {ETIMEDOUT, 10060},
};

// Fails calls while the time lasts. Code that repeats a call without end thus fails its test
// instead of hanging.
Hook FailsFor(int error, Milliseconds time) {
    return [error, end = Clock::now() + time](const Call& call) {
        return Clock::now() < end ? call.Fail(error) : call.Make();
    };
}
constexpr Milliseconds TooLong{5000};

using TransferFaultOfStreams = Started;

TEST_F(TransferFaultOfStreams, ASignalAfterTheTimeoutOfAnEmptyReceiveIsNoEnd) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 10)));
    const FailingCall interrupted(SystemCall::Poll, EINTR);
    EXPECT_TRUE(FailsWith(10060, Winsock::recv(pair.server.Get(), nullptr, 0, 0)));
    EXPECT_EQ(interrupted.Seen(), 1U);
}

TEST_F(TransferFaultOfStreams, AnErrorThatTheSystemDoesNotTellIsNone) {
    Pair pair = NewConnectedPair();
    pair.client.Close();
    EXPECT_EQ(Receive(pair.server), "");
    ASSERT_EQ(::shutdown(static_cast<int>(pair.server.Get()), SHUT_WR), 0);
    AwaitEnd(pair.server.Get());
    const FailingCall untold(SystemCall::Getsockopt, ENOBUFS, {.option = SO_ERROR});
    EXPECT_EQ(Receive(pair.server), "");
    EXPECT_EQ(untold.Seen(), 1U);
}

TEST_F(TransferFaultOfStreams, OfThisMachineIsToldAndIsNotTheEnd) {
    const Pair pair = NewConnectedPair();
    for (const Row& row : OfThisMachine) {
        {
            const FailingCall sends(SystemCall::Send, row.system);
            const FailingCall receives(SystemCall::Recv, row.system);
            EXPECT_TRUE(FailsWith(row.winsock, Send(pair.client, "x"))) << strerror(row.system);
            EXPECT_TRUE(FailsWith(row.winsock, TryReceive(pair.server))) << strerror(row.system);
        }
        EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 3)) << strerror(row.system);
        EXPECT_EQ(Receive(pair.server), "abc") << strerror(row.system);
    }
}

TEST_F(TransferFaultOfStreams, OfThisMachineIsToldUnderATimeLimit) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 60'000)));
    ASSERT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 60'000)));
    for (const Row& row : OfThisMachine) {
        const FailingCall sends(SystemCall::Send, row.system);
        const FailingCall receives(SystemCall::Recv, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Send(pair.client, "x"))) << strerror(row.system);
        EXPECT_TRUE(FailsWith(row.winsock, TryReceive(pair.server))) << strerror(row.system);
    }
}

TEST_F(TransferFaultOfStreams, OfTheConnectionIsTold) {
    for (const Row& row : OfTheEnd) {
        const Pair pair = NewConnectedPair();
        const FailingCall sends(SystemCall::Send, row.system);
        const FailingCall receives(SystemCall::Recv, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, Send(pair.client, "x"))) << strerror(row.system);
        EXPECT_TRUE(FailsWith(row.winsock, TryReceive(pair.server))) << strerror(row.system);
    }
}

TEST_F(TransferFaultOfStreams, ThatWouldBlockIsATimeLimitToWhoWaitsAndElseThat) {
    const Pair pair = NewConnectedPair();
    const FailingCall sends(SystemCall::Send, EAGAIN);
    const FailingCall receives(SystemCall::Recv, EAGAIN);
    EXPECT_TRUE(FailsWith(10060, Send(pair.client, "x")));
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.server)));
    SetNonBlocking(pair.client);
    SetNonBlocking(pair.server);
    EXPECT_TRUE(FailsWith(10035, Send(pair.client, "x")));
    EXPECT_TRUE(FailsWith(10035, TryReceive(pair.server)));
}

TEST_F(TransferFaultOfStreams, OfASignalIsNone) {
    const Pair pair = NewConnectedPair();
    for (const bool blocking : {true, false}) {
        SetNonBlocking(pair.client, !blocking);
        SetNonBlocking(pair.server, !blocking);
        const FailingCall sends(SystemCall::Send, EINTR, {.count = 5});
        const FailingCall receives(SystemCall::Recv, EINTR, {.count = 5});
        EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
        EXPECT_EQ(Receive(pair.server), "abc");
        EXPECT_EQ(sends.Seen(), 6U);
        EXPECT_EQ(receives.Seen(), 6U);
    }
}

// The bytes that the system took before are the call's success.
TEST_F(TransferFaultOfStreams, InTheMiddleOfABlockingSendIsTheNextCalls) {
    const Pair pair = NewConnectedPair();
    const HookedCall sends(SystemCall::Send, [](const Call& call) {
        const bool first = *call.Pointer<const char>(1) == 'a';
        if (!first) return call.Fail(ENOBUFS);
        return Word{::send(static_cast<int>(call.Argument(0)), call.Pointer<char>(1), 3, 0)};
    });
    EXPECT_TRUE(Succeeds(Send(pair.client, "abcdef"), 3));
    EXPECT_EQ(sends.Seen(), 2U);
    EXPECT_EQ(Receive(pair.server), "abc");
}

TEST_F(TransferFaultOfStreams, ThatCutsASendShortIsMadeUpFor) {
    const Pair pair = NewConnectedPair();
    const HookedCall sends(SystemCall::Send, [](const Call& call) {
        return Word{::send(static_cast<int>(call.Argument(0)), call.Pointer<char>(1), 1, 0)};
    });
    EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
    EXPECT_EQ(sends.Seen(), 3U);
    SetNonBlocking(pair.client);
    EXPECT_TRUE(Succeeds(Send(pair.client, "def"), 1));
    EXPECT_EQ(sends.Seen(), 4U);
}

// Another receiver may have taken what was announced.
TEST_F(TransferFaultOfStreams, OfAWaitThatTookAnAnnouncementForGrantedIsNone) {
    const Pair pair = NewConnectedPair();
    const FailingCall interrupted(SystemCall::Recv, EINTR, {.count = 1});
    const HookedCall gone(SystemCall::Ppoll,
                          [&pair](const Call& call) {
                              EXPECT_TRUE(Succeeds(Send(pair.client, "abc"), 3));
                              const Word ready = call.Make();
                              EXPECT_EQ(Receive(pair.server), "abc");
                              return ready;
                          },
                          {.count = 1});
    ASSERT_TRUE(Succeeds(SetOption(pair.server, Winsock::OptionReceiveTimeout, 100)));
    EXPECT_TRUE(FailsWith(10060, TryReceive(pair.server)));
    EXPECT_EQ(gone.Seen(), 2U);
}

TEST_F(TransferFaultOfStreams, OfTheWaitForATransferIsTold) {
    const Pair pair = NewConnectedPair();
    const FailingCall interrupted(SystemCall::Recv, EINTR);
    const FailingCall waits(SystemCall::Ppoll, ENOMEM);
    EXPECT_TRUE(FailsWith(10055, TryReceive(pair.server)));
}

// What is to happen goes on being awaited with the time that is left, whichever limit is set.
TEST_F(TransferFaultOfStreams, OfSignalsWithoutEndEndsWithTheTimeLimit) {
    const Pair pair = NewConnectedPair();
    const auto expectLimit = [](int option, const OwnedSocket& socket, auto call) {
        ASSERT_TRUE(Succeeds(SetOption(socket, option, 40)));
        EXPECT_GE(TimeOf([&] { EXPECT_TRUE(FailsWith(10060, call(socket))); }), Milliseconds(40));
    };
    const HookedCall sends(SystemCall::Send, FailsFor(EINTR, TooLong));
    const HookedCall receives(SystemCall::Recv, FailsFor(EINTR, TooLong));
    expectLimit(Winsock::OptionSendTimeout, pair.client,
                [](const OwnedSocket& socket) { return Send(socket, "x"); });
    expectLimit(Winsock::OptionReceiveTimeout, pair.server,
                [](const OwnedSocket& socket) { return TryReceive(socket); });
}

// The system tells its limit in seconds and what is left of them.
TEST_F(TransferFaultOfStreams, OfASignalLeavesALimitOfSecondsAsItIs) {
    const Pair pair = NewConnectedPair();
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionReceiveTimeout, 2'050)));
    const FailingCall receives(SystemCall::Recv, EINTR, {.count = 1});
    EXPECT_GE(TimeOf([&] { EXPECT_TRUE(FailsWith(10060, TryReceive(pair.client))); }),
              Milliseconds(2'050));
}

TEST_F(TransferFaultOfStreams, OfNothingAtAllIsNone) {
    const Pair pair = NewConnectedPair();
    EXPECT_TRUE(Succeeds(Send(pair.client, "")));
    ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionSendTimeout, 20'000)));
    EXPECT_TRUE(Succeeds(Send(pair.client, "")));
    const FailingCall signal(SystemCall::Send, EINTR, {.count = 1});
    EXPECT_TRUE(Succeeds(Send(pair.client, "")));
}

using TransferFaultOfDatagrams = Started;

struct Datagrams {
    OwnedSocket receiver = NewBoundDatagram();
    OwnedSocket sender = NewBoundDatagram();

    int SendOne() const { return SendTo(sender, "abc", LocalAddress(receiver)); }
};

// Without room there is nothing that a null buffer could be asked for.
TEST_F(TransferFaultOfDatagrams, OfANullBufferIsItsLength) {
    const Datagrams datagrams;
    const Winsock::AddressIpv4 address = LocalAddress(datagrams.receiver);
    const auto send = [&](int length) {
        return Winsock::sendto(datagrams.sender.Get(), nullptr, length, 0, &address, 16);
    };
    const auto receive = [&](int length) {
        return Winsock::recv(datagrams.receiver.Get(), nullptr, length, 0);
    };
    for (const int length : {1, 2, 65507}) {
        EXPECT_TRUE(FailsWith(10014, send(length)));
        EXPECT_TRUE(FailsWith(10014, receive(length)));
    }
    EXPECT_TRUE(Succeeds(send(0)));
    EXPECT_TRUE(Succeeds(receive(0)));
    EXPECT_TRUE(Succeeds(datagrams.SendOne(), 3));
    EXPECT_TRUE(FailsWith(10014, receive(1)));
    EXPECT_TRUE(FailsWith(10040, receive(0)));
}

// What has come stands, though the socket is closed before the call has ended.
TEST_F(TransferFaultOfDatagrams, OfASocketThatIsClosedMeanwhileIsNoneOfWhatHasCome) {
    Datagrams datagrams;
    ASSERT_TRUE(Succeeds(datagrams.SendOne(), 3));
    const Winsock::Handle handle = datagrams.receiver.Take();
    std::thread closer;
    char buffer[3];
    {
        const HookedCall receives(SystemCall::Recvmsg, [&](const Call& call) {
            const Word result = call.Make();
            closer = std::thread([handle] { Winsock::closesocket(handle); });
            while (Winsock::listen(handle, 1) != 0 && Winsock::WSAGetLastError() != 10038)
                std::this_thread::yield();
            return result;
        });
        EXPECT_TRUE(Succeeds(Winsock::recvfrom(handle, buffer, 3, 0, nullptr, nullptr), 3));
    }
    closer.join();
}

TEST_F(TransferFaultOfDatagrams, OfThisMachineIsTold) {
    const Datagrams datagrams;
    for (const Row& row : OfThisMachine) {
        {
            const FailingCall sends(SystemCall::Sendto, row.system);
            const FailingCall receives(SystemCall::Recvmsg, row.system);
            // What the machine has no room for counts as sent.
            if (row.system != ENOBUFS) {
                EXPECT_TRUE(FailsWith(row.winsock, datagrams.SendOne())) << strerror(row.system);
            }
            EXPECT_TRUE(FailsWith(row.winsock, TryReceive(datagrams.receiver)));
        }
        EXPECT_TRUE(Succeeds(datagrams.SendOne(), 3)) << strerror(row.system);
        EXPECT_EQ(Receive(datagrams.receiver), "abc") << strerror(row.system);
    }
}

TEST_F(TransferFaultOfDatagrams, OfAFullQueueCountsAsSent) {
    const Datagrams datagrams;
    const FailingCall sends(SystemCall::Sendto, ENOBUFS);
    EXPECT_TRUE(Succeeds(datagrams.SendOne(), 3));
    EXPECT_EQ(sends.Seen(), 1U);
}

TEST_F(TransferFaultOfDatagrams, OfTheWayIsTold) {
    const Datagrams datagrams;
    constexpr Row rows[] = {{EHOSTUNREACH, 10065},
                            {ENETUNREACH, 10051},
                            {EMSGSIZE, 10040},
                            {EACCES, 10013},
                            {EHOSTDOWN, 10064}};
    for (const Row& row : rows) {
        const FailingCall sends(SystemCall::Sendto, row.system);
        EXPECT_TRUE(FailsWith(row.winsock, datagrams.SendOne())) << strerror(row.system);
        EXPECT_EQ(sends.Seen(), 1U);
    }
}

// The system tells the sender of what an earlier datagram met; the next one is not to blame.
TEST_F(TransferFaultOfDatagrams, OfAnEarlierDatagramIsNone) {
    const Datagrams datagrams;
    const FailingCall sends(SystemCall::Sendto, ECONNREFUSED, {.count = 3});
    EXPECT_TRUE(Succeeds(datagrams.SendOne(), 3));
    EXPECT_EQ(sends.Seen(), 4U);
}

TEST_F(TransferFaultOfDatagrams, ThatComesAgainAndAgainIsToldAtLast) {
    const Datagrams datagrams;
    const HookedCall sends(SystemCall::Sendto, FailsFor(ECONNREFUSED, TooLong));
    EXPECT_TRUE(FailsWith(10061, datagrams.SendOne()));
}

TEST_F(TransferFaultOfDatagrams, OfAReportIsAResetToWhoReceives) {
    const Datagrams datagrams;
    for (const int error : {ECONNREFUSED, EHOSTUNREACH, ENETUNREACH}) {
        const FailingCall receives(SystemCall::Recvmsg, error);
        EXPECT_TRUE(FailsWith(10054, TryReceive(datagrams.receiver))) << strerror(error);
    }
}

TEST_F(TransferFaultOfDatagrams, ThatWouldBlockIsATimeLimitToWhoWaitsAndElseThat) {
    const Datagrams datagrams;
    ASSERT_TRUE(Succeeds(SetOption(datagrams.sender, Winsock::OptionSendTimeout, 10)));
    ASSERT_TRUE(Succeeds(SetOption(datagrams.receiver, Winsock::OptionReceiveTimeout, 10)));
    const FailingCall sends(SystemCall::Sendto, EAGAIN);
    const FailingCall receives(SystemCall::Recvmsg, EAGAIN);
    EXPECT_TRUE(FailsWith(10060, datagrams.SendOne()));
    EXPECT_TRUE(FailsWith(10060, TryReceive(datagrams.receiver)));
    SetNonBlocking(datagrams.sender);
    SetNonBlocking(datagrams.receiver);
    EXPECT_TRUE(FailsWith(10035, datagrams.SendOne()));
    EXPECT_TRUE(FailsWith(10035, TryReceive(datagrams.receiver)));
}

TEST_F(TransferFaultOfDatagrams, OfASignalIsNone) {
    const Datagrams datagrams;
    const FailingCall sends(SystemCall::Sendto, EINTR, {.count = 3});
    const FailingCall receives(SystemCall::Recvmsg, EINTR, {.count = 3});
    EXPECT_TRUE(Succeeds(datagrams.SendOne(), 3));
    EXPECT_EQ(Receive(datagrams.receiver), "abc");
    EXPECT_EQ(sends.Seen(), 4U);
}

TEST_F(TransferFaultOfDatagrams, OfSignalsWithoutEndEndsWithTheOwnTimeLimit) {
    const Datagrams datagrams;
    ASSERT_TRUE(Succeeds(SetOption(datagrams.sender, Winsock::OptionSendTimeout, 40)));
    ASSERT_TRUE(Succeeds(SetOption(datagrams.receiver, Winsock::OptionReceiveTimeout, 40)));
    const HookedCall sends(SystemCall::Sendto, FailsFor(EINTR, TooLong));
    EXPECT_TRUE(FailsWith(10060, datagrams.SendOne()));
    const HookedCall receives(SystemCall::Recvmsg, FailsFor(EINTR, TooLong));
    EXPECT_TRUE(FailsWith(10060, TryReceive(datagrams.receiver)));
}

TEST_F(TransferFaultOfDatagrams, OfTheFirstSendsBindIsTold) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    {
        const FailingCall binds(SystemCall::Bind, ENOBUFS);
        EXPECT_TRUE(FailsWith(10055, SendTo(sender, "x", LocalAddress(receiver))));
        const FailingCall taken(SystemCall::Bind, EADDRINUSE);
        EXPECT_TRUE(FailsWith(10048, SendTo(sender, "x", LocalAddress(receiver))));
    }
    EXPECT_TRUE(FailsWith(10022, TryReceive(sender)));
    EXPECT_TRUE(Succeeds(SendTo(sender, "abc", LocalAddress(receiver)), 3));
    EXPECT_EQ(Receive(receiver), "abc");
}

}  // namespace
}  // namespace Conformance
