// The extended socket with streams.
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

#include <future>

namespace Loopback {
namespace {

class ExtendedStream : public ExtendedTest {};

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedStream, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(ExtendedStream, TheSocketIsOfTheVersion) {
    const XtPtr socket = Stream();
    EXPECT_EQ(socket->GetAddressFamily(), GetParam());
    EXPECT_TRUE(socket->IsValid());
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_NONE);
}

TEST_P(ExtendedStream, TwoSocketsExchangeBytes) {
    const XtConnection connection = Connected();
    ExpectExchange(*connection.client, *connection.server);
    EXPECT_EQ(connection.client->GetStatus(), VelNet::STATUS_IDLE);
    EXPECT_EQ(connection.server->GetStatus(), VelNet::STATUS_IDLE);
    EXPECT_EQ(connection.server->GetAddressFamily(), GetParam());
}

TEST_P(ExtendedStream, SpecialAddressesStandForTheTexts) {
    const XtPtr listener = Stream();
    listener->Bind(VelNet::SPECIAL_ANY, "0");
    listener->Listen();
    const XtPtr client = Stream();
    client->Connect(VelNet::SPECIAL_LOOPBACK, PortOf(*listener).c_str());
    const AcceptedXt accepted = Accept(*listener);
    EXPECT_EQ(accepted.host, Host());
    ExpectExchange(*client, *accepted.socket);
}

TEST_P(ExtendedStream, ManyBytesArriveWhole) {
    const XtConnection connection = Connected();
    std::string bytes(4U << 20U, '\0');
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        bytes[index] = static_cast<char>(index % 251);
    }
    auto sent = std::async(std::launch::async, [&] { SendAll(*connection.client, bytes); });
    EXPECT_TRUE(ReceiveExactly(*connection.server, bytes.size()) == bytes);
    sent.get();
}

TEST_P(ExtendedStream, OneThreadSendsWhileAnotherReceives) {
    const XtConnection connection = Connected();
    const std::string bytes(1U << 20U, 'x');
    auto echoed = std::async(std::launch::async, [&] {
        for (std::size_t count = 0; count < bytes.size();) {
            const std::string some = ReceiveSome(*connection.server);
            SendAll(*connection.server, some);
            count += some.size();
        }
    });
    auto sent = std::async(std::launch::async, [&] { SendAll(*connection.client, bytes); });
    EXPECT_TRUE(ReceiveExactly(*connection.client, bytes.size()) == bytes);
    sent.get();
    echoed.get();
}

TEST_P(ExtendedStream, AcceptTellsThePeersNumbers) {
    const XtPtr listener = Listening();
    const XtPtr client = Stream();
    client->Connect(Host(), PortOf(*listener).c_str());

    XtPtr socket;
    ReturnString host("before");
    ReturnString port("before");
    XtPtr& returned = listener->Accept(socket, host, port);
    EXPECT_EQ(&returned, &socket);
    EXPECT_STREQ(host.c_str(), Host());
    EXPECT_EQ(port.c_str(), PortOf(*client));
}

TEST_P(ExtendedStream, AcceptReleasesWhatItsOwnerHeld) {
    const XtPtr listener = Listening();
    const XtPtr first = Stream();
    first->Connect(Host(), PortOf(*listener).c_str());
    XtPtr socket = Accept(*listener).socket;
    const XtPtr second = Stream();
    second->Connect(Host(), PortOf(*listener).c_str());

    ReturnString host;
    ReturnString port;
    listener->Accept(socket, host, port);
    EXPECT_EQ(port.c_str(), PortOf(*second));
    EXPECT_EQ(FailureOfReceive(*first), XtConnectionClosed(ComputerName(), "0"));
    ExpectExchange(*second, *socket);
}

TEST_P(ExtendedStream, AFailedAcceptLeavesItsArgumentsAlone) {
    const XtPtr listener = Listening();
    EXPECT_TRUE(listener->SetNonBlocking());
    EnableOnly({Error});
    XtPtr socket = Stream();
    const SocketXt* const before = socket.Get();
    ReturnString host("host before");
    ReturnString port("port before");
    const Failure failure = FailureOf([&] { listener->Accept(socket, host, port); });
    EXPECT_EQ(failure, AcceptFailed(std::string(Host()) + " : 0", 10035,
                                    u"Resource temporarily unavailable"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(socket.Get(), before);
    EXPECT_STREQ(host.c_str(), "host before");
    EXPECT_STREQ(port.c_str(), "port before");
}

TEST_P(ExtendedStream, TheLifeOfAConnectionIsRecorded) {
    const std::string computer = ComputerName();
    const XtPtr listener = Listening();
    const std::string port = PortOf(*listener);
    const XtPtr client = Stream();
    EnableAllRouters();
    client->Connect(Host(), port.c_str());
    const std::string clientPort = PortOf(*client);
    const XtPtr server = Accept(*listener).socket;
    SendAll(*client, "A\xFF");
    EXPECT_EQ(ReceiveExactly(*server, 2), "A\xFF");
    client->Close();
    server->Close();
    listener->Close();

    const std::u16string ofClient = TextEnds(computer, "0", Host(), port);
    const std::u16string ofListener = TextEnds(Host(), "0", Host(), clientPort);
    const std::u16string ofServer = TextEnds("", "", "", "");
    EXPECT_EQ(Sink().Take(),
              (Records{
                  {ConnectionTrace, u"Connected, " + ofClient},
                  {ConnectionTrace, u"Connected, " + ofListener},
                  {PacketTrace, u"Sent 2 bytes, " + ofClient},
                  {VerbosePacketTrace, u"Sent 2 bytes, " + ofClient + u", data: 41FFFFFFFF"},
                  {PacketTrace, u"Received 2 bytes, " + ofServer},
                  {VerbosePacketTrace, u"Received 2 bytes, " + ofServer + u", data: 41FFFFFFFF"},
                  {ConnectionTrace, u"Disconnected, " + ofClient},
                  {ConnectionTrace, u"Disconnected, " + ofServer},
                  {ConnectionTrace, u"Disconnected, " + ofListener},
              }));
}

TEST_P(ExtendedStream, TheLastReferenceClosesWithARecord) {
    XtPtr socket = Bound(Stream());
    EnableAllRouters();
    socket = XtPtr();
    EXPECT_EQ(Sink().Take(),
              (Records{{ConnectionTrace, u"Disconnected, " + TextEnds(Host(), "0", "", "")}}));
}

TEST_P(ExtendedStream, APeersCloseIsAFailureEachTime) {
    const Failure closed = XtConnectionClosed(ComputerName(), "0");
    const XtConnection connection = Connected();
    connection.server->Close();
    EnableAllRouters();
    EXPECT_EQ(FailureOfReceive(*connection.client), closed);
    EXPECT_EQ(FailureOfReceive(*connection.client), closed);
    EXPECT_EQ(Sink().Take(), (Records{{Error, closed.text}, {Error, closed.text}}));
}

TEST_P(ExtendedStream, AnAcceptedSocketsFailuresShowNoAddresses) {
    const XtConnection connection = Connected();
    connection.client->Close();
    EXPECT_EQ(FailureOfReceive(*connection.server), XtConnectionClosed("", ""));

    const XtConnection other = Connected();
    EXPECT_TRUE(other.server->SetNonBlocking());
    EXPECT_EQ(FailureOfReceive(*other.server),
              XtReceiveFailed(10035, u"Resource temporarily unavailable"));
}

TEST_P(ExtendedStream, AReceiveEndsNotBeforeItsTimeInMilliseconds) {
    const XtPtr listener = Listening();
    const XtConnection connection = ConnectedThrough(*listener);
    connection.client->SetReceiveTimeout(1500);
    const auto start = Clock::now();
    const Failure failure = FailureOfReceive(*connection.client);
    const auto elapsed = Clock::now() - start;
    EXPECT_EQ(failure,
              XtReceiveFailed(10060, u"Connection timed out",
                              ComputerName() + ":0 : " + Host() + ":" + PortOf(*listener)));
    EXPECT_GE(elapsed, std::chrono::milliseconds(1500));
    EXPECT_LT(elapsed, Patience);
    ExpectExchange(*connection.server, *connection.client);
}

TEST_P(ExtendedStream, ASendEndsNotBeforeItsTimeInMilliseconds) {
    const XtConnection connection = Connected();
    connection.server->SetSendTimeout(1500);
    const std::string bytes(1U << 20U, 'x');
    auto start = Clock::now();
    const Failure failure = FailureOf([&] {
        do {
            start = Clock::now();
        } while (connection.server->Send(bytes.data(), static_cast<int>(bytes.size())) > 0);
    });
    const auto elapsed = Clock::now() - start;
    EXPECT_EQ(failure, XtSendFailed(10060, u"Connection timed out"));
    EXPECT_GE(elapsed, std::chrono::milliseconds(1500));
    EXPECT_LT(elapsed, Patience);
}

TEST_P(ExtendedStream, SendIntoAFullBufferIsZeroAndSilent) {
    const XtConnection connection = Connected();
    EXPECT_TRUE(connection.client->SetNonBlocking());
    const std::string bytes(65536, 'x');
    std::size_t waiting = 0;
    EnableOnly({Error});
    while (const int sent = connection.client->Send(bytes.data(), 65536)) {
        waiting += static_cast<std::size_t>(sent);
    }
    EXPECT_GT(waiting, 0U);
    EXPECT_TRUE(ReceiveExactly(*connection.server, waiting) == std::string(waiting, 'x'));
    EXPECT_TRUE(Eventually([&] { return connection.client->Send("y", 1) == 1; }));
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_P(ExtendedStream, WhatSpeaksOfOctetsDoesNothing) {
    const XtPtr listener = Listening();
    EnableAllRouters();
    VelNet::Socket& plain = *listener;
    plain.Bind(LocalHost(), 1);
    plain.Connect(LocalHost(), 1);
    VelNet::SocketAddress remote({1, 2, 3, 4}, 5);
    EXPECT_FALSE(plain.Accept(remote));
    EXPECT_EQ(remote.GetOctets(), VelNet::Octets(1, 2, 3, 4));
    EXPECT_EQ(remote.GetPort(), 5);
    for (const VelNet::SocketAddress& own : {plain.GetLocalAddress(), plain.GetRemoteAddress()}) {
        EXPECT_EQ(own.GetOctets(), VelNet::Octets());
        EXPECT_EQ(own.GetPort(), 0);
    }
    EXPECT_EQ(plain.GetStatus(), VelNet::STATUS_LISTENING);
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_P(ExtendedStream, AStreamReceivesFromItsPeerWithoutBeingToldWho) {
    const XtConnection connection = Connected();
    SendAll(*connection.client, "abc");
    EnableOnly({Error});
    char buffer[3] = {};
    ReturnString host("before");
    ReturnString port("before");
    EXPECT_EQ(connection.server->RecvFrom(buffer, 3, host, port), 3);
    EXPECT_EQ(std::string(buffer, 3), "abc");
    EXPECT_STREQ(host.c_str(), "before");
    EXPECT_STREQ(port.c_str(), "before");
    const std::u16string text =
        XtFailure("RecvFrom", "cannot get remote host and port", "::getnameinfo", "no-ip : no-port",
                  10047, u"Address family not supported by protocol family")
            .text;
    const Records told = {{Error, text}};
    // Wine leaves no error behind, and the number 0 ends the text.
    const Records toldByWine = {{Error, text.substr(0, text.find(u'\u273F'))}};
    const Records records = Sink().Take();
    EXPECT_TRUE(records == told || (Support::RunsOnWine() && records == toldByWine))
        << testing::PrintToString(records);
}

}  // namespace
}  // namespace Loopback
