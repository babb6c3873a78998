// The extended socket with datagrams.
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

#include <vector>

namespace Loopback {
namespace {

class ExtendedDatagram : public ExtendedTest {
protected:
    static XtPtr Receiver() { return Bound(Datagrams()); }
    // The most that a datagram of the version carries.
    static std::size_t MostBytes() { return GetParam() == Ipv6 ? 65527 : 65507; }
};

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedDatagram, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(ExtendedDatagram, TwoSocketsExchangeThem) {
    const XtPtr one = Receiver();
    const XtPtr other = Receiver();
    EXPECT_EQ(SendTo(*one, "question", Host(), PortOf(*other)), 8);
    const Received question = ReceiveFrom(*other);
    EXPECT_EQ(question, (Received{"question", Host(), PortOf(*one)}));
    EXPECT_EQ(SendTo(*other, "answer", question.host.c_str(), question.port), 6);
    EXPECT_EQ(ReceiveFrom(*one), (Received{"answer", Host(), PortOf(*other)}));
}

TEST_P(ExtendedDatagram, ASenderNeedsNoAddressOfItsOwn) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Datagrams();
    EXPECT_EQ(sender->SendTo("abc", 3, VelNet::SPECIAL_LOOPBACK, PortOf(*receiver).c_str()), 3);
    EXPECT_EQ(ReceiveFrom(*receiver), (Received{"abc", Host(), PortOf(*sender)}));
    EXPECT_EQ(sender->GetStatus(), VelNet::STATUS_NONE);
}

TEST_P(ExtendedDatagram, DatagramsOfAllLengthsArriveWhole) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Datagrams();
    for (const std::size_t length :
         {std::size_t{1}, std::size_t{1472}, std::size_t{65507}, MostBytes()}) {
        const std::string bytes(length, 'x');
        EXPECT_EQ(SendTo(*sender, bytes, Host(), PortOf(*receiver)), static_cast<int>(length));
        const Received received = ReceiveFrom(*receiver, 65536);
        EXPECT_TRUE(received.bytes == bytes) << length << ": " << received.bytes.size();
    }
}

TEST_P(ExtendedDatagram, OneByteMoreThanTheSystemCarriesIsRefused) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Datagrams();
    const std::string port = PortOf(*receiver);
    EnableOnly({Error});
    const Failure failure =
        SendToFailed(Host() + (" : " + port), "::sendto", 10040, u"Message too long");
    EXPECT_EQ(FailureOf([&] { SendTo(*sender, std::string(MostBytes() + 1, 'x'), Host(), port); }),
              failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    SendTo(*sender, "next", Host(), port);
    EXPECT_EQ(ReceiveFrom(*receiver).bytes, "next");
}

TEST_P(ExtendedDatagram, AnEmptyOneIsReceivedAndRecordedLikeAnyOther) {
    const std::string computer = ComputerName();
    const XtPtr receiver = Receiver();
    const XtPtr sender = Receiver();
    const std::string port = PortOf(*receiver);
    EnableAllRouters();
    EXPECT_EQ(SendTo(*sender, "", Host(), port), 0);
    EXPECT_EQ(ReceiveFrom(*receiver), (Received{"", Host(), PortOf(*sender)}));
    const std::u16string ofSender = TextEnds(computer, "Random Port", Host(), port);
    const std::u16string ofReceiver = TextEnds(Host(), "0", Host(), PortOf(*sender));
    EXPECT_EQ(Sink().Take(),
              (Records{{PacketTrace, u"Sendto 0 bytes, " + ofSender},
                       {VerbosePacketTrace, u"Sendto 0 bytes, " + ofSender + u", data: "},
                       {PacketTrace, u"Recvfrom 0 bytes, " + ofReceiver},
                       {VerbosePacketTrace, u"Recvfrom 0 bytes, " + ofReceiver + u", data: "}}));
}

TEST_P(ExtendedDatagram, TransfersAreRecordedWithTheirTexts) {
    const std::string computer = ComputerName();
    const XtPtr receiver = Receiver();
    const XtPtr sender = Receiver();
    const std::string port = PortOf(*receiver);
    EnableAllRouters();
    SendTo(*sender, "a\x80", Host(), port);
    ReceiveFrom(*receiver);
    const std::u16string ofSender = TextEnds(computer, "Random Port", Host(), port);
    const std::u16string ofReceiver = TextEnds(Host(), "0", Host(), PortOf(*sender));
    EXPECT_EQ(Sink().Take(),
              (Records{
                  {PacketTrace, u"Sendto 2 bytes, " + ofSender},
                  {VerbosePacketTrace, u"Sendto 2 bytes, " + ofSender + u", data: 61FFFFFF80"},
                  {PacketTrace, u"Recvfrom 2 bytes, " + ofReceiver},
                  {VerbosePacketTrace, u"Recvfrom 2 bytes, " + ofReceiver + u", data: 61FFFFFF80"},
              }));
}

TEST_P(ExtendedDatagram, WithTheVerboseRouterAloneOnlyItsRecordIsWritten) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Receiver();
    EnableOnly({VerbosePacketTrace});
    SendTo(*sender, "a", Host(), PortOf(*receiver));
    Sink().Take();
    ReceiveFrom(*receiver);
    EXPECT_EQ(Sink().Take(),
              (Records{{VerbosePacketTrace, u"Recvfrom 1 bytes, " +
                                                TextEnds(Host(), "0", Host(), PortOf(*sender)) +
                                                u", data: 61"}}));
}

TEST_P(ExtendedDatagram, OneThatExactlyFitsIsReceived) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Datagrams();
    SendTo(*sender, "abc", Host(), PortOf(*receiver));
    EXPECT_EQ(ReceiveFrom(*receiver, 3).bytes, "abc");
}

TEST_P(ExtendedDatagram, OneThatIsTooLongIsAFailureWithTheBufferFilled) {
    const XtPtr receiver = Receiver();
    const XtPtr sender = Datagrams();
    SendTo(*sender, "too long", Host(), PortOf(*receiver));
    SendTo(*sender, "next", Host(), PortOf(*receiver));
    EnableAllRouters();
    char buffer[] = "....";
    ReturnString host("before");
    ReturnString port("before");
    const Failure failure = RecvFromFailed(10040, u"Message too long");
    EXPECT_EQ(FailureOf([&] { receiver->RecvFrom(buffer, 3, host, port); }), failure);
    EXPECT_STREQ(buffer, "too.");
    EXPECT_STREQ(host.c_str(), "before");
    EXPECT_STREQ(port.c_str(), "before");
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(ReceiveFrom(*receiver).bytes, "next");
}

TEST_P(ExtendedDatagram, WithNothingWaitingANonBlockingSocketThrows) {
    const XtPtr receiver = Receiver();
    EXPECT_TRUE(receiver->SetNonBlocking());
    EnableAllRouters();
    const Failure nothing = RecvFromFailed(10035, u"Resource temporarily unavailable");
    EXPECT_EQ(FailureOf([&] { ReceiveFrom(*receiver); }), nothing);
    EXPECT_EQ(Sink().Take(), (Records{{Error, nothing.text}}));

    const XtPtr sender = Datagrams();
    SendTo(*sender, "abc", Host(), PortOf(*receiver));
    EXPECT_TRUE(Eventually([&] { return receiver->IsDataAvailable(); }));
    EXPECT_EQ(ReceiveFrom(*receiver).bytes, "abc");
}

TEST_P(ExtendedDatagram, AReceiveEndsNotBeforeItsTimeInMilliseconds) {
    const XtPtr receiver = Receiver();
    receiver->SetReceiveTimeout(1500);
    const auto start = Clock::now();
    const Failure failure = FailureOf([&] { ReceiveFrom(*receiver); });
    const auto elapsed = Clock::now() - start;
    EXPECT_EQ(failure, RecvFromFailed(10060, u"Connection timed out"));
    EXPECT_GE(elapsed, std::chrono::milliseconds(1500));
    EXPECT_LT(elapsed, Patience);
}

TEST_P(ExtendedDatagram, OnAnUnboundSocketNothingCanBeReceived) {
    const XtPtr socket = Datagrams();
    EXPECT_TRUE(socket->SetNonBlocking());
    const Failure failure = FailureOf([&] { ReceiveFrom(*socket); });
    EXPECT_TRUE(failure == RecvFromFailed(10022, u"Invalid argument") ||
                (Support::RunsOnWine() &&
                 failure == RecvFromFailed(10035, u"Resource temporarily unavailable")))
        << testing::PrintToString(failure);
}

// As many on the way at a time as the system's buffers hold for certain.
TEST_P(ExtendedDatagram, TenThousandArriveInOrder) {
    constexpr int Count = 10'000;
    constexpr int OnTheWay = 16;
    const XtPtr receiver = Receiver();
    const XtPtr sender = Receiver();
    const std::string port = PortOf(*receiver);
    const std::string sendersPort = PortOf(*sender);
    for (int first = 0; first < Count; first += OnTheWay) {
        for (int number = first; number < first + OnTheWay; ++number) {
            const std::string text = std::to_string(number);
            ASSERT_EQ(SendTo(*sender, text, Host(), port), static_cast<int>(text.size()));
        }
        for (int number = first; number < first + OnTheWay; ++number) {
            ASSERT_EQ(ReceiveFrom(*receiver),
                      (Received{std::to_string(number), Host(), sendersPort}));
        }
    }
}

TEST_P(ExtendedDatagram, ABoundSocketCountsAsConnected) {
    const XtPtr receiver = Datagrams();
    receiver->Bind(VelNet::SPECIAL_ANY, "0");
    EXPECT_EQ(receiver->GetStatus(), VelNet::STATUS_IDLE);
    const XtPtr sender = Datagrams();
    SendTo(*sender, "x", Host(), PortOf(*receiver));
    EXPECT_TRUE(Eventually([&] { return receiver->GetStatus() == VelNet::STATUS_DATA_PENDING; }));
    EXPECT_EQ(ReceiveFrom(*receiver).host, Host());
    EXPECT_EQ(receiver->GetStatus(), VelNet::STATUS_IDLE);
}

TEST_P(ExtendedDatagram, ConnectedSocketsSendAndReceiveWithoutAddresses) {
    const XtPtr one = Receiver();
    const XtPtr other = Receiver();
    one->Connect(Host(), PortOf(*other).c_str());
    other->Connect(Host(), PortOf(*one).c_str());
    ExpectExchange(*one, *other);
}

TEST_P(ExtendedDatagram, OneThatFindsNobodyIsToldAtTheNextReceive) {
    if (Support::RunsOnWine()) GTEST_SKIP() << "Wine never tells a socket without a peer";
    // Where there is such a network, nobody else takes the port meanwhile.
    const Machine::OwnNetwork network;
    const XtPtr socket = Receiver();
    const std::string port = PortOf(*Receiver());
    EXPECT_EQ(SendTo(*socket, "x", Host(), port), 1);
    EXPECT_EQ(FailureOf([&] { ReceiveFrom(*socket); }),
              RecvFromFailed(10054, u"Connection reset by peer"));
    EXPECT_EQ(SendTo(*socket, "to itself", Host(), PortOf(*socket)), 9);
    EXPECT_EQ(ReceiveFrom(*socket).bytes, "to itself");
}

TEST_P(ExtendedDatagram, AnAddressOfTheOtherVersionIsRefused) {
    const XtPtr socket = Datagrams();
    const std::string other = LoopbackOf(GetParam() == Ipv6 ? Ipv4 : Ipv6);
    EnableOnly({Error});
    const Failure failure = FailureOf([&] { SendTo(*socket, "x", other.c_str(), "9"); });
    EXPECT_EQ(failure.text.substr(0, failure.text.find(u", errno = ")),
              Widen("VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , "
                    "::sendto , " +
                    other + " : 9 "));
    EXPECT_TRUE(failure.code == (GetParam() == Ipv6 ? 10014 : 10047) || Support::RunsOnWine())
        << failure.code;
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_P(ExtendedDatagram, AnUnresolvableHostIsAFailureWithItsTexts) {
    const XtPtr socket = Datagrams();
    EnableOnly({Error});
    const std::string host = UnresolvableHost();
    const Failure failure = FailureOf([&] { SendTo(*socket, "x", host.c_str(), "9"); });
    EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
    EXPECT_EQ(failure, SendToFailed(host + " : 9", "::getaddrinfo", failure.code,
                                    ResolversText(failure.code)));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_P(ExtendedDatagram, TwoThatReuseShareAPort) {
    const XtPtr first = Datagrams();
    first->SetReuseAddress();
    first->Bind(Host(), "0");
    const std::string port = PortOf(*first);
    const XtPtr second = Datagrams();
    second->SetReuseAddress();
    second->Bind(Host(), port.c_str());
    EXPECT_EQ(PortOf(*second), port);

    const XtPtr third = Datagrams();
    EXPECT_EQ(FailureOf([&] { third->Bind(Host(), port.c_str()); }).code, 10048);
}

}  // namespace
}  // namespace Loopback
