// Transfers that are complete, with peers that are slow, go away, or send without end.
#include <VelCompanion/Transfers.h>
#include <companion/ScriptedSocket.h>
#include <loopback/ExtendedTest.h>
#include <loopback/RawConnection.h>
#include <support/Wine.h>

#include <future>
#include <stdexcept>
#include <string>
#include <thread>

namespace Companion {
namespace {

using Loopback::Connection;
using VelCompanion::Milliseconds;
using VelCompanion::ReceiveExactly;
using VelCompanion::ReceiveLine;
using VelCompanion::ReceiveSome;
using VelCompanion::SendAll;

constexpr Milliseconds Short(50);
constexpr Milliseconds Long = Loopback::Patience;

// The code that the operation throws; 0 if it throws nothing.
template <class Operation>
int CodeOf(Operation operation) {
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        return failure.GetErrorCode();
    }
    return 0;
}

template <class Operation>
std::string TextOf(Operation operation) {
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        return VelCompanion::Describe(failure);
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return "(nothing was thrown)";
}

VelBase::ReturnPtrI<ScriptedSocket> Receiving(std::deque<std::string> parts) {
    VelBase::ReturnPtrI<ScriptedSocket> socket(new ScriptedSocket);
    socket->parts = std::move(parts);
    return socket;
}

VelBase::ReturnPtrI<ScriptedSocket> Sending(int accepted) {
    VelBase::ReturnPtrI<ScriptedSocket> socket(new ScriptedSocket);
    socket->accepted = accepted;
    return socket;
}

// All lines up to the end.
std::vector<std::string> LinesOf(VelNet::Socket& socket, std::size_t longest) {
    std::vector<std::string> lines;
    std::string come;
    while (auto line = ReceiveLine(socket, come, longest))
        lines.push_back(*line);
    return lines;
}

TEST(TransfersSending, GoesOnAfterAPart) {
    const auto socket = Sending(3);
    SendAll(*socket, "eleven bytes");
    EXPECT_EQ(socket->sent, "eleven bytes");
    EXPECT_EQ(socket->timeouts, std::vector<unsigned int>{});
}

TEST(TransfersSending, OfNothingCallsNothing) {
    const auto socket = Sending(1);
    socket->mostSent = 0;
    SendAll(*socket, "");
    SendAll(*socket, "", Long);
    EXPECT_EQ(socket->sent, "");
}

TEST(TransfersSending, PassesAFailureOn) {
    const auto socket = Sending(2);
    socket->mostSent = 4;
    EXPECT_EQ(CodeOf([&] { SendAll(*socket, "eleven bytes"); }), VelNet::SOCKET_ERR_CONNRESET);
    EXPECT_EQ(socket->sent, "elev");
}

TEST(TransfersSending, WithinALimitLeavesEachCallWhatIsLeft) {
    const auto socket = Sending(6);
    SendAll(*socket, "eleven bytes", Long);
    EXPECT_EQ(socket->sent, "eleven bytes");
    ASSERT_EQ(socket->timeouts.size(), 2U);
    EXPECT_LE(socket->timeouts[0], static_cast<unsigned int>(Long.count()));
    EXPECT_GT(socket->timeouts[0], 0U);
    EXPECT_LE(socket->timeouts[1], socket->timeouts[0]);
}

TEST(TransfersSending, WithoutTimeSendsOnceAndFails) {
    const auto socket = Sending(3);
    EXPECT_EQ(TextOf([&] { SendAll(*socket, "eleven bytes", Milliseconds(0)); }),
              "VelCompanion::SendAll() - FAIL. Not done within 0 ms, 10060 (SOCKET_ERR_TIMEDOUT)");
    EXPECT_EQ(socket->sent, "ele");
    EXPECT_EQ(socket->timeouts, std::vector<unsigned int>{1});
}

TEST(TransfersSending, LimitsThatAreNoneOrHuge) {
    const auto socket = Sending(20);
    SendAll(*socket, "a", VelCompanion::NoLimit);
    EXPECT_EQ(socket->timeouts, std::vector<unsigned int>{});
    SendAll(*socket, "b", std::chrono::hours(24 * 365));
    EXPECT_EQ(socket->timeouts, std::vector<unsigned int>{4294967294});
    EXPECT_THROW(SendAll(*socket, "c", Milliseconds(-1)), std::invalid_argument);
    EXPECT_EQ(socket->sent, "ab");
}

TEST(TransfersReceiving, SomeIsOnePart) {
    const auto socket = Receiving({"one", "two"});
    char buffer[16];
    EXPECT_EQ(std::string(buffer, ReceiveSome(*socket, buffer, sizeof buffer)), "one");
    EXPECT_EQ(std::string(buffer, ReceiveSome(*socket, buffer, 2)), "tw");
    EXPECT_EQ(std::string(buffer, ReceiveSome(*socket, buffer, 2)), "o");
    EXPECT_EQ(ReceiveSome(*socket, buffer, sizeof buffer), 0U);
}

TEST(TransfersReceiving, SomeOfNothingIsRefused) {
    const auto socket = Receiving({"one"});
    char byte = 0;
    EXPECT_EQ(TextOf([&] { (void)ReceiveSome(*socket, &byte, 0); }),
              "VelCompanion::ReceiveSome: the length is 0");
    EXPECT_THROW((void)ReceiveSome(*socket, &byte, 1, Milliseconds(-1)), std::invalid_argument);
    EXPECT_TRUE(socket->lengths.empty());
}

TEST(TransfersReceiving, SomePassesOtherFailuresOn) {
    const auto socket = Receiving({});
    socket->endCode = VelNet::SOCKET_ERR_CONNRESET;
    char byte = 0;
    EXPECT_EQ(CodeOf([&] { (void)ReceiveSome(*socket, &byte, 1); }), VelNet::SOCKET_ERR_CONNRESET);
    // The end's code with another text.
    socket->endCode = VelNet::SOCKET_ERR_UNKNOWN;
    socket->end = "odd";
    EXPECT_EQ(CodeOf([&] { (void)ReceiveSome(*socket, &byte, 1); }), VelNet::SOCKET_ERR_UNKNOWN);
}

TEST(TransfersReceiving, ExactlyCollectsParts) {
    const auto socket = Receiving({"a", "bc", "defgh"});
    char buffer[5];
    ReceiveExactly(*socket, buffer, 4);
    EXPECT_EQ(std::string(buffer, 4), "abcd");
    EXPECT_EQ(ReceiveExactly(*socket, 3), "efg");
    EXPECT_EQ(ReceiveExactly(*socket, 0), "");
    EXPECT_EQ(socket->lengths, (std::vector<int>{4, 3, 1, 3}));
}

TEST(TransfersReceiving, ExactlyFailsAtAnEarlyEnd) {
    const auto socket = Receiving({"abc"});
    const auto isEnd = [&](auto operation) {
        try {
            operation();
        } catch (const VelNet::Exception& failure) {
            return VelCompanion::IsEndOfStream(failure);
        }
        return false;
    };
    char buffer[8];
    EXPECT_TRUE(isEnd([&] { ReceiveExactly(*socket, buffer, 4); }));
    socket->parts = {"abc"};
    EXPECT_TRUE(isEnd([&] { (void)ReceiveExactly(*socket, 4); }));
}

TEST(TransfersReceiving, ExactlyAsMuchAsAPeerAnnouncesCostsNothingBeforeItComes) {
    const auto socket = Receiving({"abc"});
    constexpr std::size_t announced = std::size_t(1) << 46U;  // no machine has that
    EXPECT_EQ(CodeOf([&] { (void)ReceiveExactly(*socket, announced); }),
              VelNet::SOCKET_ERR_UNKNOWN);
    for (const int length : socket->lengths)
        EXPECT_EQ(length, 4096);
}

TEST(TransfersOfLines, AreTakenApartHoweverTheyCome) {
    EXPECT_EQ(LinesOf(*Receiving({"one\ntwo\r\n\nfour\n"}), 10),
              (std::vector<std::string>{"one", "two", "", "four"}));
    EXPECT_EQ(LinesOf(*Receiving({"o", "ne\nt", "wo\r", "\n", "\r\n", "fo", "ur", "\n"}), 10),
              (std::vector<std::string>{"one", "two", "", "four"}));
    EXPECT_EQ(LinesOf(*Receiving({std::string("a\0b\rc\n", 6)}), 10),
              (std::vector<std::string>{std::string("a\0b\rc", 5)}));
    EXPECT_EQ(LinesOf(*Receiving({}), 10), std::vector<std::string>{});
}

TEST(TransfersOfLines, AsLongAsAllowedAreLines) {
    EXPECT_EQ(LinesOf(*Receiving({"12345\n", "12345\r\n", "1234", "5\r", "\n"}), 5),
              (std::vector<std::string>{"12345", "12345", "12345"}));
    EXPECT_EQ(LinesOf(*Receiving({"\n\r\n"}), 0), (std::vector<std::string>{"", ""}));
}

TEST(TransfersOfLines, LongerThanAllowedAreRefused) {
    for (const char* line : {"123456\n", "123456", "123456\r\n", "12345\r6"}) {
        std::string come;
        const auto socket = Receiving({line});
        EXPECT_EQ(TextOf([&] { (void)ReceiveLine(*socket, come, 5); }),
                  "VelCompanion::ReceiveLine: a line is longer than 5 bytes");
        EXPECT_EQ(come, line);
    }
}

TEST(TransfersOfLines, WithoutEndAreReceivedNoFurtherThanTheLongest) {
    const auto socket = Receiving({std::string(1U << 20U, 'x')});
    std::string come;
    EXPECT_THROW((void)ReceiveLine(*socket, come, 10000), std::length_error);
    EXPECT_LE(come.size(), 10001U + 4096U);
    EXPECT_LE(socket->lengths.size(), 4U);
}

TEST(TransfersOfLines, CutOffByTheEndAreFailures) {
    const auto socket = Receiving({"whole\npart"});
    std::string come;
    EXPECT_EQ(ReceiveLine(*socket, come, 10), "whole");
    try {
        (void)ReceiveLine(*socket, come, 10);
        FAIL() << "a part was taken for a line";
    } catch (const VelNet::Exception& failure) {
        EXPECT_TRUE(VelCompanion::IsEndOfStream(failure));
    }
    EXPECT_EQ(come, "part");
}

TEST(TransfersOfLines, PassFailuresOn) {
    const auto socket = Receiving({});
    socket->endCode = VelNet::SOCKET_ERR_CONNRESET;
    std::string come;
    EXPECT_EQ(CodeOf([&] { (void)ReceiveLine(*socket, come, 10); }), VelNet::SOCKET_ERR_CONNRESET);
    EXPECT_THROW((void)ReceiveLine(*socket, come, 10, Milliseconds(-1)), std::invalid_argument);
}

using TransfersBetweenSockets = Loopback::LoopbackTest;

// More than the system's buffers hold.
const std::string& Much() {
    static const std::string bytes(32U << 20U, 'x');
    return bytes;
}

TEST_F(TransfersBetweenSockets, MuchPassesANonBlockingSocketToASlowReader) {
    const Connection connection = Loopback::Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    auto received = std::async(std::launch::async,
                               [&] { return ReceiveExactly(*connection.server, Much().size()); });
    SendAll(*connection.client, Much());
    EXPECT_TRUE(received.get() == Much());
}

TEST_F(TransfersBetweenSockets, ANonBlockingReceiverWaits) {
    const Connection connection = Loopback::Connected();
    EXPECT_TRUE(connection.server->SetNonBlocking());
    auto line = std::async(std::launch::async, [&] {
        std::string come;
        return ReceiveLine(*connection.server, come, 100);
    });
    SendAll(*connection.client, "a li");
    std::this_thread::sleep_for(Short);
    SendAll(*connection.client, "ne\n");
    EXPECT_EQ(line.get(), "a line");
    connection.client->Close();
    char byte = 0;
    EXPECT_EQ(ReceiveSome(*connection.server, &byte, 1), 0U);
}

TEST_F(TransfersBetweenSockets, APeerThatDoesNotReadIsGivenUpWithinTheLimit) {
    for (const bool nonBlocking : {false, true}) {
        const Connection connection = Loopback::Connected();
        if (nonBlocking) {
            EXPECT_TRUE(connection.client->SetNonBlocking());
        }
        const auto begin = Loopback::Clock::now();
        EXPECT_EQ(CodeOf([&] { SendAll(*connection.client, Much(), Milliseconds(300)); }),
                  VelNet::SOCKET_ERR_TIMEDOUT);
        EXPECT_LT(Loopback::Clock::now() - begin, Long);
    }
}

TEST_F(TransfersBetweenSockets, ASilentPeerIsGivenUpWithinTheLimit) {
    const Connection connection = Loopback::Connected();
    char byte = 0;
    std::string come;
    VelNet::Socket& socket = *connection.client;
    EXPECT_EQ(TextOf([&] { (void)ReceiveSome(socket, &byte, 1, Short); }),
              "VelCompanion::ReceiveSome() - FAIL. Not done within 50 ms, 10060 "
              "(SOCKET_ERR_TIMEDOUT)");
    EXPECT_EQ(CodeOf([&] { ReceiveExactly(socket, &byte, 1, Short); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveExactly(socket, 1, Milliseconds(0)); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveLine(socket, come, 10, Short); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
}

// One byte before each call's own timeout keeps a connection open for ever without a limit.
TEST_F(TransfersBetweenSockets, APeerThatDripsCannotProlongTheLimit) {
    const Connection connection = Loopback::Connected();
    std::promise<void> enough;
    std::thread dripping([&, ended = enough.get_future()] {
        while (ended.wait_for(Milliseconds(10)) != std::future_status::ready)
            connection.client->Send("x", 1);
    });
    std::string come;
    EXPECT_EQ(
        CodeOf([&] { (void)ReceiveLine(*connection.server, come, 1000000, Milliseconds(500)); }),
        VelNet::SOCKET_ERR_TIMEDOUT);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveExactly(*connection.server, 1000000, Milliseconds(200)); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
    enough.set_value();
    dripping.join();
}

TEST_F(TransfersBetweenSockets, AfterTheLimitTheSameLineGoesOn) {
    const Connection connection = Loopback::Connected();
    std::string come;
    SendAll(*connection.client, "first ");
    EXPECT_EQ(CodeOf([&] { (void)ReceiveLine(*connection.server, come, 20, Milliseconds(500)); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
    SendAll(*connection.client, "second\nnext");
    EXPECT_EQ(ReceiveLine(*connection.server, come, 20, Long), "first second");
}

TEST_F(TransfersBetweenSockets, ASocketsOwnTimeoutHolds) {
    const Connection connection = Loopback::Connected();
    connection.client->SetReceiveTimeout(1);
    char byte = 0;
    EXPECT_EQ(CodeOf([&] { (void)ReceiveSome(*connection.client, &byte, 1); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
}

TEST_F(TransfersBetweenSockets, AResetIsNoEnd) {
    const Loopback::SocketPtr listener = Loopback::Listening();
    Loopback::RawConnection peer(Loopback::PortOf(*listener));
    const Loopback::SocketPtr server = Loopback::Accepted(*listener);
    peer.Reset();
    char byte = 0;
    const int code = CodeOf([&] { (void)ReceiveSome(*server, &byte, 1, Long); });
    // Wine takes it for one.
    EXPECT_TRUE(code == VelNet::SOCKET_ERR_CONNRESET || (Support::RunsOnWine() && code == 0))
        << code;
}

TEST_F(TransfersBetweenSockets, OfAClosedSocketSayThatItIsClosed) {
    const Connection connection = Loopback::Connected();
    VelNet::Socket& socket = *connection.client;
    socket.Close();
    char byte = 0;
    std::string come;
    EXPECT_EQ(CodeOf([&] { SendAll(socket, "x"); }), VelNet::SOCKET_ERR_NOTSOCK);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveSome(socket, &byte, 1); }), VelNet::SOCKET_ERR_NOTSOCK);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveSome(socket, &byte, 1, Short); }),
              VelNet::SOCKET_ERR_NOTSOCK);
    EXPECT_EQ(CodeOf([&] { (void)ReceiveLine(socket, come, 1); }), VelNet::SOCKET_ERR_NOTSOCK);
}

// Nothing was waited for in vain with a call that fails.
TEST_F(TransfersBetweenSockets, WithALimitWriteNoRecordWhileTheyWait) {
    const Connection connection = Loopback::Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    Loopback::EnableOnly({Loopback::Error});
    char byte = 0;
    EXPECT_THROW((void)ReceiveSome(*connection.client, &byte, 1, Short), VelNet::Exception);
    EXPECT_EQ(Sink().Take(), Loopback::Records{});
}

class TransfersOfExtendedStreams : public Loopback::ExtendedTest {};

TEST_P(TransfersOfExtendedStreams, AreTheSame) {
    const Loopback::XtConnection connection = Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    auto received = std::async(std::launch::async,
                               [&] { return ReceiveExactly(*connection.server, Much().size()); });
    SendAll(*connection.client, Much(), Long);
    EXPECT_TRUE(received.get() == Much());

    SendAll(*connection.server, "line\n");
    std::string come;
    EXPECT_EQ(ReceiveLine(*connection.client, come, 10), "line");
    EXPECT_EQ(CodeOf([&] { (void)ReceiveLine(*connection.client, come, 10, Short); }),
              VelNet::SOCKET_ERR_TIMEDOUT);
    connection.server->Close();
    EXPECT_EQ(ReceiveLine(*connection.client, come, 10, Long), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(Versions, TransfersOfExtendedStreams,
                         testing::Values(Loopback::Ipv4, Loopback::Ipv6), Loopback::NameOfVersion);

}  // namespace
}  // namespace Companion
