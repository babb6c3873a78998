// Connecting and accepting within a limit.
#include <VelCompanion/Connecting.h>
#include <VelCompanion/Transfers.h>
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

#include <functional>
#include <future>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace Companion {
namespace {

using namespace std::string_view_literals;
using Loopback::SocketPtr;
using Loopback::XtPtr;
using VelCompanion::AcceptWithin;
using VelCompanion::ConnectWithin;
using VelCompanion::Milliseconds;

constexpr Milliseconds Long = Loopback::Patience;
constexpr Milliseconds Short(100);

using Operation = std::function<void()>;

int CodeOf(const Operation& operation) {
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        return failure.GetErrorCode();
    }
    return 0;
}

// The text of the exception that says what was wrong with the arguments.
std::string RefusalOf(const Operation& operation) {
    try {
        operation();
    } catch (const std::invalid_argument& failure) {
        return failure.what();
    }
    return "(not refused)";
}

// Connects until the listener's queue is full and nobody answers; the failure's text.
using Connect = std::function<void(Milliseconds)>;
std::string FailureOfQueuedConnects(const Connect& connect) {
    constexpr int most = 50;
    for (int count = 0; count < most; ++count) {
        try {
            connect(Short);
        } catch (const VelNet::Exception& failure) {
            return VelCompanion::Describe(failure);
        }
    }
    return "(all were connected)";
}

std::string NotReached(const std::string& host, const std::string& port) {
    return "VelCompanion::ConnectWithin() - FAIL. Not done within 100 ms: " + host + " port " +
           port + ", 10060 (SOCKET_ERR_TIMEDOUT)";
}

using ConnectingClassically = Loopback::LoopbackTest;

TEST_F(ConnectingClassically, LeavesAnOrdinaryConnection) {
    const SocketPtr listener = Loopback::Listening();
    const SocketPtr client = Loopback::StreamSocket();
    ConnectWithin(*client, Loopback::LocalHost(), Loopback::PortOf(*listener), Long);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
    const SocketPtr server = Loopback::Accepted(*listener);
    Loopback::ExpectExchange(*client, *server);
    // It blocks.
    client->SetReceiveTimeout(1);
    EXPECT_EQ(Loopback::FailureOfReceive(*client).code, VelNet::SOCKET_ERR_TIMEDOUT);

    EXPECT_TRUE(client->SetNonBlocking());
    const auto collection = VelCompanion::MakeCollection();
    collection->Add(client.Get(), VelNet::EVENT_READ);
    EXPECT_FALSE(VelCompanion::Select(*collection, 0));
    Loopback::SendAll(*server, "x");
    const auto ready = VelCompanion::Select(*collection, 60);
    ASSERT_TRUE(ready);
    EXPECT_EQ(ready->GetCount(), 1U);
}

TEST_F(ConnectingClassically, ByNameTriesTheHostsAddresses) {
    const SocketPtr listener = Loopback::Listening();
    const SocketPtr client = Loopback::StreamSocket();
    ConnectWithin(*client, "localhost", Loopback::PortOf(*listener), Long);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
    const SocketPtr another = Loopback::StreamSocket();
    ConnectWithin(*another, "127.0.0.1", Loopback::PortOf(*listener), VelCompanion::NoLimit);
    EXPECT_EQ(another->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_F(ConnectingClassically, TellsARefusalAndLeavesTheSocketUsable) {
    const SocketPtr closedPort = Loopback::Bound(Loopback::StreamSocket());
    const unsigned short port = Loopback::PortOf(*closedPort);
    const SocketPtr byName = Loopback::StreamSocket();
    EXPECT_EQ(CodeOf([&] { ConnectWithin(*byName, "127.0.0.1", port, Long); }),
              VelNet::SOCKET_ERR_CONNREFUSED);
    const SocketPtr client = Loopback::StreamSocket();
    EXPECT_EQ(CodeOf([&] { ConnectWithin(*client, Loopback::LocalHost(), port, Long); }),
              VelNet::SOCKET_ERR_CONNREFUSED);
    EXPECT_TRUE(client->IsValid());
    if (Support::RunsOnWine()) return;  // it lets nobody connect after a refusal
    const SocketPtr listener = Loopback::Listening();
    ConnectWithin(*client, Loopback::LocalHost(), Loopback::PortOf(*listener), Long);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_F(ConnectingClassically, GivesUpWhereNobodyAnswers) {
    const SocketPtr listener = Loopback::Listening();
    const unsigned short port = Loopback::PortOf(*listener);
    std::vector<SocketPtr> clients;
    const auto connect = [&](Milliseconds limit) {
        clients.push_back(Loopback::StreamSocket());
        ConnectWithin(*clients.back(), Loopback::LocalHost(), port, limit);
    };
    EXPECT_EQ(FailureOfQueuedConnects(connect), NotReached("127.0.0.1", std::to_string(port)));
    EXPECT_FALSE(clients.back()->IsValid());
}

TEST_F(ConnectingClassically, PassesAFailureOfTheResolverOn) {
    const SocketPtr client = Loopback::StreamSocket();
    const int code = CodeOf([&] { ConnectWithin(*client, "127.0.0.1.1.", 9, Long); });
    EXPECT_GE(code, VelNet::SOCKET_ERR_HOST_NOT_FOUND);
    EXPECT_LE(code, VelNet::SOCKET_ERR_NO_DATA);
    EXPECT_TRUE(client->IsValid());
}

TEST_F(ConnectingClassically, RefusesWhatCannotBeRight) {
    const SocketPtr listener = Loopback::Listening();
    const unsigned short port = Loopback::PortOf(*listener);
    const SocketPtr client = Loopback::StreamSocket();
    EXPECT_EQ(RefusalOf([&] { ConnectWithin(*client, "127.0.0.1", port, Milliseconds(-1)); }),
              "VelCompanion: a time limit is negative");
    EXPECT_EQ(RefusalOf([&] { ConnectWithin(*client, "127.0.0.1\0.host"sv, port, Long); }),
              "VelCompanion: the text contains a zero, after 9 characters");
    EXPECT_TRUE(client->SetNonBlocking());
    EXPECT_EQ(RefusalOf([&] { ConnectWithin(*client, Loopback::LocalHost(), port, Long); }),
              "VelCompanion::ConnectWithin: the socket does not block; make it so once it is "
              "connected");
    const SocketPtr closed = Loopback::StreamSocket();
    closed->Close();
    EXPECT_EQ(CodeOf([&] { ConnectWithin(*closed, Loopback::LocalHost(), port, Long); }),
              VelNet::SOCKET_ERR_NOTSOCK);
}

class ConnectingExtended : public Loopback::ExtendedTest {};

TEST_P(ConnectingExtended, LeavesAnOrdinaryConnection) {
    const XtPtr listener = Listening();
    const XtPtr client = Stream();
    ConnectWithin(*client, Host(), Loopback::PortOf(*listener), Long);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
    const Loopback::AcceptedXt server = Loopback::Accept(*listener);
    Loopback::ExpectExchange(*client, *server.socket);
}

// By an Octets, or seen as a Socket, it must not end without having done anything.
TEST_P(ConnectingExtended, IsTheSameForASocketOfUnknownFamily) {
    const XtPtr listener = Listening();
    const auto port = static_cast<unsigned short>(std::stoi(Loopback::PortOf(*listener)));
    const XtPtr client = Stream();
    VelNet::Socket& socket = *client;
    ConnectWithin(socket, Host(), port, Long);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_IDLE);
    if (GetParam() != Loopback::Ipv4) return;
    const XtPtr another = Stream();
    ConnectWithin(*another, Loopback::LocalHost(), port, Long);
    EXPECT_EQ(another->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_P(ConnectingExtended, TellsARefusal) {
    const XtPtr closedPort = Loopback::Bound(Stream());
    const XtPtr client = Stream();
    EXPECT_EQ(CodeOf([&] { ConnectWithin(*client, Host(), Loopback::PortOf(*closedPort), Long); }),
              VelNet::SOCKET_ERR_CONNREFUSED);
    EXPECT_TRUE(client->IsValid());
}

TEST_P(ConnectingExtended, GivesUpWhereNobodyAnswers) {
    const XtPtr listener = Listening();
    const std::string port = Loopback::PortOf(*listener);
    std::vector<XtPtr> clients;
    const auto connect = [&](Milliseconds limit) {
        clients.push_back(Stream());
        ConnectWithin(*clients.back(), Host(), port, limit);
    };
    EXPECT_EQ(FailureOfQueuedConnects(connect), NotReached(Host(), port));
    EXPECT_FALSE(clients.back()->IsValid());
}

TEST_P(ConnectingExtended, RefusesWhatCannotBeRight) {
    const XtPtr client = Stream();
    EXPECT_NE(RefusalOf([&] { ConnectWithin(*client, Host(), "9\0"sv, Long); }), "(not refused)");
    EXPECT_NE(RefusalOf([&] { ConnectWithin(*client, "\0"sv, "9", Long); }), "(not refused)");
    EXPECT_NE(RefusalOf([&] { ConnectWithin(*client, Host(), "9", Milliseconds(-1)); }),
              "(not refused)");
}

using ConnectingAcceptsClassically = Loopback::LoopbackTest;

TEST_F(ConnectingAcceptsClassically, WhatComesInTime) {
    const SocketPtr listener = Loopback::Listening();
    VelNet::SocketAddress remote(VelNet::Octets(1, 2, 3, 4), 5);
    EXPECT_FALSE(AcceptWithin(*listener, remote, Short));
    EXPECT_FALSE(AcceptWithin(*listener, remote, Milliseconds(0)));
    EXPECT_EQ(remote.GetPort(), 5);

    const SocketPtr client = Loopback::StreamSocket();
    auto connecting = std::async(std::launch::async, [&] {
        client->Connect(Loopback::LocalHost(), Loopback::PortOf(*listener));
    });
    const SocketPtr server = AcceptWithin(*listener, remote, Long);
    connecting.get();
    ASSERT_TRUE(server);
    EXPECT_EQ(remote.GetPort(), Loopback::PortOf(*client));
    Loopback::SetPatience(*server);
    Loopback::ExpectExchange(*client, *server);
}

TEST_F(ConnectingAcceptsClassically, WithAListenerThatDoesNotBlock) {
    const SocketPtr listener = Loopback::Listening();
    EXPECT_TRUE(listener->SetNonBlocking());
    VelNet::SocketAddress remote;
    EXPECT_FALSE(AcceptWithin(*listener, remote, Short));
    const SocketPtr client = Loopback::ConnectedTo(*listener);
    const SocketPtr server = AcceptWithin(*listener, remote, Long);
    ASSERT_TRUE(server);
    EXPECT_EQ(Loopback::FailureOfReceive(*server).code, VelNet::SOCKET_ERR_WOULDBLOCK);
}

TEST_F(ConnectingAcceptsClassically, NothingWhereNobodyListens) {
    VelNet::SocketAddress remote;
    const SocketPtr bound = Loopback::Bound(Loopback::StreamSocket());
    EXPECT_EQ(CodeOf([&] { (void)AcceptWithin(*bound, remote, Long); }), VelNet::SOCKET_ERR_INVAL);
    bound->Close();
    EXPECT_EQ(CodeOf([&] { (void)AcceptWithin(*bound, remote, Long); }),
              VelNet::SOCKET_ERR_NOTSOCK);
    EXPECT_NE(RefusalOf([&] { (void)AcceptWithin(*bound, remote, Milliseconds(-1)); }),
              "(not refused)");
}

TEST_P(ConnectingExtended, AcceptsWhatComesInTime) {
    const XtPtr listener = Listening();
    VelBase::ReturnString host;
    VelBase::ReturnString port("unchanged");
    EXPECT_FALSE(AcceptWithin(*listener, host, port, Short));
    EXPECT_STREQ(port.c_str(), "unchanged");

    const XtPtr client = Stream();
    client->Connect(Host(), Loopback::PortOf(*listener).c_str());
    const XtPtr server = AcceptWithin(*listener, host, port, Long);
    ASSERT_TRUE(server);
    EXPECT_STREQ(host.c_str(), Host());
    EXPECT_EQ(port.c_str(), Loopback::PortOf(*client));

    EXPECT_TRUE(listener->SetNonBlocking());
    EXPECT_FALSE(AcceptWithin(*listener, host, port, Short));
    const XtPtr bound = Loopback::Bound(Stream());
    EXPECT_EQ(CodeOf([&] { (void)AcceptWithin(*bound, host, port, Long); }),
              VelNet::SOCKET_ERR_INVAL);
}

INSTANTIATE_TEST_SUITE_P(Versions, ConnectingExtended,
                         testing::Values(Loopback::Ipv4, Loopback::Ipv6), Loopback::NameOfVersion);

}  // namespace
}  // namespace Companion
