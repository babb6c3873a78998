// Failures of transfers that may be a connection's end, and what is remembered of them.
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

struct Fault {
    int system;
    int winsock;
};

// What the kernel tells of a connection, which may have ended by it.
constexpr Fault Ends[] = {
    {ECONNRESET, 10054},   {ECONNABORTED, 10053}, {ETIMEDOUT, 10060}, {ECONNREFUSED, 10061},
    {EHOSTUNREACH, 10065}, {ENETUNREACH, 10051},  {EHOSTDOWN, 10064}, {ENONET, 10065},
    {ENOPROTOOPT, 10042},  {EOPNOTSUPP, 10045},   {EPROTO, 10022},    {EACCES, 10013},
    {EMSGSIZE, 10040},
};

// What the kernel tells of the call alone.
constexpr Fault Refusals[] = {
    {EPERM, 10013},   {ENOBUFS, 10055}, {ENOMEM, 10055}, {ENETDOWN, 10050}, {ENOTSOCK, 10038},
    {EBADF, 10038},   {EFAULT, 10014},  {EUSERS, 10068}, {EDQUOT, 10069},   {ESTALE, 10070},
    {EREMOTE, 10071}, {ETIME, 10060},   {ENOSR, 10055},  {EIO, 10022},      {ENETRESET, 10052},
};

int Number(const OwnedSocket& socket) {
    return static_cast<int>(socket.Get());
}

// A socket whose peer is not the library's. Both directions have timeouts that never pass, or
// none.
class ConnectionFault : public testing::WithParamInterface<unsigned int>, public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        Join();
    }
    void TearDown() override {
        socket.Close();
        peer.Close();
        Started::TearDown();
    }
    void Join() {
        const OwnedSocket listener = NewListener();
        peer = RawPeer::ConnectedTo(LocalPort(listener));
        socket = Accept(listener);
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReceiveTimeout, GetParam())));
        ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, GetParam())));
    }
    void Reset() {
        peer.Reset();
        AwaitEnd(socket.Get());
    }
    // The kernel's report goes to somebody else.
    void ResetUnseen() {
        Reset();
        int error = 0;
        socklen_t length = sizeof error;
        ::getsockopt(Number(socket), SOL_SOCKET, SO_ERROR, &error, &length);
        ASSERT_EQ(error, ECONNRESET);
    }
    int FailedSend(int error) {
        const FailingCall fails(SystemCall::Send, error, {.count = 1});
        return Send(socket, "x");
    }
    int FailedReceive(int error) {
        const FailingCall fails(SystemCall::Recv, error, {.count = 1});
        return TryReceive(socket);
    }
    void ExpectExchange() {
        ASSERT_TRUE(Succeeds(Send(socket, "question"), 8));
        EXPECT_EQ(peer.Receive(8), "question");
        peer.Send("answer");
        EXPECT_EQ(Receive(socket), "answer");
    }
    void ExpectForEver(int error) {
        for (int round = 0; round < 2; ++round) {
            EXPECT_TRUE(FailsWith(error, TryReceive(socket)));
            EXPECT_TRUE(FailsWith(error, Send(socket, "x")));
        }
    }

    RawPeer peer;
    OwnedSocket socket;
};

INSTANTIATE_TEST_SUITE_P(WithoutAndWithTimeout, ConnectionFault, testing::Values(0U, 60'000U));

TEST_P(ConnectionFault, OfAConnectionThatLivesIsThatCallsFailureAlone) {
    for (const auto* const faults : {&Ends[0], &Refusals[0]}) {
        const std::size_t count = faults == &Ends[0] ? std::size(Ends) : std::size(Refusals);
        for (const Fault* fault = faults; fault != faults + count; ++fault) {
            SCOPED_TRACE(fault->system);
            EXPECT_TRUE(FailsWith(fault->winsock, FailedSend(fault->system)));
            EXPECT_TRUE(FailsWith(fault->winsock, FailedReceive(fault->system)));
            ExpectExchange();
        }
    }
}

TEST_P(ConnectionFault, OfTheOwnEndedHalfIsNoEnd) {
    EXPECT_TRUE(FailsWith(10058, FailedSend(EPIPE)));
    ExpectExchange();
}

TEST_P(ConnectionFault, ByWhichTheKernelGaveUpIsToldOnceAndThenTheEnd) {
    for (const Fault& fault : Ends) {
        SCOPED_TRACE(fault.system);
        Join();
        ResetUnseen();
        EXPECT_TRUE(FailsWith(fault.winsock, FailedReceive(fault.system)));
        ExpectForEver(fault.system == ECONNRESET ? 10054 : 10053);
    }
}

TEST_P(ConnectionFault, ByWhichTheKernelGaveUpIsToldOnceToASenderToo) {
    for (const Fault& fault : Ends) {
        SCOPED_TRACE(fault.system);
        Join();
        ResetUnseen();
        EXPECT_TRUE(FailsWith(fault.winsock, FailedSend(fault.system)));
        ExpectForEver(fault.system == ECONNRESET ? 10054 : 10053);
    }
}

TEST_P(ConnectionFault, OfTheCallAloneHidesNoEnd) {
    for (const Fault& fault : Refusals) {
        SCOPED_TRACE(fault.system);
        Join();
        Reset();
        EXPECT_TRUE(FailsWith(fault.winsock, FailedSend(fault.system)));
        EXPECT_TRUE(FailsWith(fault.winsock, FailedReceive(fault.system)));
        ExpectForEver(10054);
    }
}

// As if each direction had its thread.
TEST_P(ConnectionFault, ThatOneDirectionHasJustMetIsAResetToTheOther) {
    Reset();
    const HookedCall hook(SystemCall::Recv,
                          [this](const Call& call) {
                              const Word received = call.Make();
                              const int error = errno;
                              EXPECT_EQ(error, ECONNRESET);
                              EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
                              errno = error;
                              return received;
                          },
                          {.count = 1});
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    ExpectForEver(10054);
}

TEST_P(ConnectionFault, ThatASenderHasJustMetIsAResetToTheReceiver) {
    peer.Send("last");
    Reset();
    const HookedCall hook(SystemCall::Send,
                          [this](const Call& call) {
                              const Word sent = call.Make();
                              const int error = errno;
                              EXPECT_EQ(error, ECONNRESET);
                              EXPECT_EQ(Receive(socket), "last");
                              EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
                              errno = error;
                              return sent;
                          },
                          {.count = 1});
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    ExpectForEver(10054);
}

TEST_P(ConnectionFault, ThatAReceiverHasJustMetIsWhatABrokenPipeMeans) {
    Reset();
    const HookedCall hook(SystemCall::Send,
                          [this](const Call& call) {
                              EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
                              const Word sent = call.Make();
                              EXPECT_EQ(errno, EPIPE);
                              return sent;
                          },
                          {.count = 1});
    const CountedCall questions(SystemCall::Recvmsg);
    EXPECT_TRUE(FailsWith(10054, Send(socket, "x")));
    EXPECT_EQ(questions.Seen(), 0U);
    ExpectForEver(10054);
}

TEST_P(ConnectionFault, ThatASenderHasJustMetIsTheEndToWhoReceivesNothing) {
    peer.Close();
    AwaitReadable(socket.Get());
    ASSERT_TRUE(Succeeds(Send(socket, "late"), 4));
    AwaitEnd(socket.Get());
    const HookedCall hook(SystemCall::Recv,
                          [this](const Call& call) {
                              const Word received = call.Make();
                              EXPECT_EQ(received, 0);
                              EXPECT_TRUE(FailsWith(10053, Send(socket, "x")));
                              return received;
                          },
                          {.count = 1});
    EXPECT_TRUE(FailsWith(10053, TryReceive(socket)));
    ExpectForEver(10053);
}

// What is read between the questions about the queue must not look like the peer's end, or hide it.
TEST_P(ConnectionFault, OfASendIsJudgedWhileAnotherThreadReceives) {
    peer.Send("last");
    peer.Close();
    AwaitReadable(socket.Get());
    ASSERT_TRUE(Succeeds(Send(socket, "late"), 4));
    AwaitEnd(socket.Get());
    const HookedCall hook(SystemCall::Recvmsg,
                          [this](const Call& call) {
                              EXPECT_EQ(Receive(socket), "last");
                              return call.Make();
                          },
                          {.count = 1});
    EXPECT_TRUE(FailsWith(10053, Send(socket, "later")));
    EXPECT_GE(hook.Seen(), 1U);
    ExpectForEver(10053);
}

// The kernels before 4.18 do not.
// Both halves were ended in good order, so that a send has come too late. Without the kernel's word
// for the acknowledgement that is not known.
TEST_P(ConnectionFault, OfAKernelThatTellsNoAcknowledgementLeavesAnOrderUnproved) {
    Support::EndSending(socket.Get());
    EXPECT_EQ(peer.Receive(1), "");
    peer.EndSending();
    AwaitEnd(socket.Get());
    {
        const HookedCall sentTwice(SystemCall::Getsockopt,
                                   [](const Call& call) {
                                       const Word result = call.Make();
                                       auto& information = *call.Pointer<tcp_info>(3);
                                       information.tcpi_bytes_sent += 5;
                                       information.tcpi_bytes_retrans += 5;
                                       return result;
                                   },
                                   {.level = IPPROTO_TCP, .option = TCP_INFO});
        EXPECT_TRUE(FailsWith(10058, Send(socket, "x")));
    }
    const FailingCall untold(SystemCall::Getsockopt, ENOBUFS,
                             {.first = 2, .level = IPPROTO_TCP, .option = TCP_INFO});
    EXPECT_TRUE(FailsWith(10053, Send(socket, "x")));
    EXPECT_EQ(untold.Seen(), 2U);
}

TEST_P(ConnectionFault, OfAKernelThatTellsNoQueueLeavesAnEndUnproved) {
    peer.Close();
    AwaitReadable(socket.Get());
    EndSending(socket.Get());
    AwaitEnd(socket.Get());
    const FailingCall fails(SystemCall::Setsockopt, ENOPROTOOPT,
                            {.level = IPPROTO_TCP, .option = TCP_INQ});
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
}

TEST_P(ConnectionFault, OfTheQuestionAboutTheQueueLeavesAnEndUnproved) {
    peer.Close();
    AwaitReadable(socket.Get());
    EndSending(socket.Get());
    AwaitEnd(socket.Get());
    const FailingCall fails(SystemCall::Recvmsg, ENOBUFS);
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_EQ(fails.Seen(), 1U);
}

// Both halves were ended in order, but the kernel does not tell whether the peer has heard of it.
TEST_P(ConnectionFault, OfAKernelThatTellsNoAcknowledgementLeavesAnEndUnproved) {
    peer.Close();
    AwaitReadable(socket.Get());
    EndSending(socket.Get());
    AwaitEnd(socket.Get());
    {
        const FailingCall fails(SystemCall::Getsockopt, ENOPROTOOPT,
                                {.first = 2, .level = IPPROTO_TCP, .option = TCP_INFO});
        EXPECT_TRUE(FailsWith(10053, FailedSend(EPIPE)));
    }
    ExpectForEver(10053);
}

}  // namespace
}  // namespace Conformance
