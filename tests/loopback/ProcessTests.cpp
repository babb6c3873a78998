// The library in a process with many descriptors, and with signals.
#include <VelNet/SocketAddress.h>
#include <loopback/LoopbackTest.h>
#include <loopback/ThisProcess.h>
#include <support/Wine.h>

#include <atomic>
#include <future>
#include <stdexcept>
#include <vector>

namespace Loopback {
namespace {

class Process : public LoopbackTest {
protected:
    Process() { EnableOnly({Error}); }
};

TEST_F(Process, WithMoreThan1024DescriptorsEverythingWorks) {
    const ThisProcess::ManyDescriptors many(1100);
    const SocketPtr listener = Listening();
    const Connection connection = ConnectedThrough(*listener);
    ExpectExchange(*connection.client, *connection.server);
    connection.client->SetReceiveTimeout(20);
    EXPECT_EQ(FailureOfReceive(*connection.client), ReceiveFailed(10060, u"Connection timed out"));

    EXPECT_TRUE(listener->SetNonBlocking());
    VelNet::SocketAddress remote;
    EXPECT_FALSE(listener->Accept(remote));
    const Connection next = ConnectedThrough(*listener);
    SendAll(*next.client, "x");
    EXPECT_TRUE(
        Eventually([&] { return next.server->GetStatus() == VelNet::STATUS_DATA_PENDING; }));
    next.server->Close();
    const Failure reset = FailureOfReceive(*next.client);
    EXPECT_TRUE(reset == ReceiveFailed(10054, u"Connection reset by peer") ||
                (Support::RunsOnWine() && reset == ConnectionClosed()))
        << testing::PrintToString(reset);
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName("localhost");
    EXPECT_EQ(addresses->GetOctets(0), LocalHost());
}

constexpr int Interruptions = 20;

void InterruptOften(ThisProcess::InterruptedThread& thread) {
    try {
        for (int count = 0; count < Interruptions; ++count) {
            thread.Interrupt();
        }
    } catch (const std::runtime_error& error) {
        ADD_FAILURE() << error.what();
    }
}

// Interrupts the thread many times, then, in any case, lets its call come to its end.
template <class Finish>
std::future<void> InterruptThen(ThisProcess::InterruptedThread& thread, Finish finish) {
    return std::async(std::launch::async, [&thread, finish] {
        InterruptOften(thread);
        finish();
    });
}

// With a limit to its time and without: the ways through the library differ.
class ProcessWithTimeout : public Process, public testing::WithParamInterface<unsigned int> {};

INSTANTIATE_TEST_SUITE_P(Milliseconds, ProcessWithTimeout, testing::Values(0U, 60'000U));

TEST_P(ProcessWithTimeout, AnInterruptedReceiveGoesOn) {
    const Connection connection = Connected();
    connection.client->SetReceiveTimeout(GetParam());
    ThisProcess::InterruptedThread thread;
    auto other = InterruptThen(thread, [&] { SendAll(*connection.server, "abc"); });
    EXPECT_EQ(ReceiveExactly(*connection.client, 3), "abc");
    other.get();
    EXPECT_EQ(thread.Count(), Interruptions);
}

TEST_F(Process, AnInterruptedAcceptGoesOn) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const SocketPtr client = StreamSocket();
    ThisProcess::InterruptedThread thread;
    auto other = InterruptThen(thread, [&] { client->Connect(LocalHost(), port); });
    const SocketPtr server = Accepted(*listener);
    other.get();
    ExpectExchange(*client, *server);
    EXPECT_EQ(thread.Count(), Interruptions);
}

// Twice the limit's time, if interruptions started it again: too late to be taken for a limit.
TEST_F(Process, AnInterruptedReceiveEndsWithItsTime) {
    const Connection connection = Connected();
    connection.client->SetReceiveTimeout(500);
    std::atomic<bool> done = false;
    ThisProcess::InterruptedThread thread;
    const auto start = Clock::now();
    auto other = std::async(std::launch::async, [&] {
        while (!done) {
            thread.Interrupt();
        }
    });
    const Failure failure = FailureOfReceive(*connection.client);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(500));
    done = true;
    other.get();
    EXPECT_EQ(failure, ReceiveFailed(10060, u"Connection timed out"));
    EXPECT_GT(thread.Count(), 0);
}

TEST_P(ProcessWithTimeout, AnInterruptedSendGoesOn) {
    const Connection connection = Connected();
    connection.client->SetSendTimeout(GetParam());
    const std::string bytes(16U << 20U, 'x');
    ThisProcess::InterruptedThread thread;
    auto other = InterruptThen(
        thread, [&] { EXPECT_EQ(ReceiveExactly(*connection.server, bytes.size()), bytes); });
    SendAll(*connection.client, bytes);
    other.get();
    EXPECT_EQ(thread.Count(), Interruptions);
    EXPECT_EQ(Sink().Take(), Records{});
}

// A listener that has no room for more connections lets the next one wait.
TEST_F(Process, AnInterruptedConnectCompletes) {
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    std::vector<SocketPtr> pending;
    for (int count = 0; count < 3; ++count) {
        pending.push_back(ConnectedTo(*listener));
    }
    const SocketPtr client = StreamSocket();
    ThisProcess::InterruptedThread thread;
    auto other = InterruptThen(thread, [&] {
        for (const SocketPtr& one : pending) {
            ExpectExchange(*one, *Accepted(*listener));
        }
    });
    client->Connect(LocalHost(), port);
    other.get();
    EXPECT_EQ(thread.Count(), Interruptions);
    ExpectExchange(*client, *Accepted(*listener));
}

}  // namespace
}  // namespace Loopback
