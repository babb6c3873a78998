// What the extended socket throws: whole texts, and what the failure leaves behind.
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

#include <utility>

namespace Loopback {
namespace {

class ExtendedFailure : public ExtendedTest {
protected:
    // A stream that nobody listens to, and its port.
    struct Unheard {
        XtPtr socket;
        std::string port;
    };
    static Unheard ClosedPort() {
        XtPtr socket = Bound(Stream());
        std::string port = PortOf(*socket);
        return {std::move(socket), std::move(port)};
    }
};

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedFailure, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(ExtendedFailure, AcceptOnASocketThatDoesNotListenFails) {
    const XtPtr socket = Stream();
    EXPECT_EQ(FailureOf([&] { Accept(*socket); }), AcceptFailed("", 10022, u"Invalid argument"));
}

TEST_P(ExtendedFailure, SendingWithoutAConnectionFails) {
    const XtPtr socket = Stream();
    const Failure failure = FailureOf([&] { socket->Send("x", 1); });
    EXPECT_TRUE(
        failure == XtSendFailed(10057, u"Socket is not connected") ||
        (Support::RunsOnWine() && failure == XtSendFailed(10054, u"Connection reset by peer")))
        << testing::PrintToString(failure);
}

TEST_P(ExtendedFailure, ARefusedConnectLeavesItsTextsBehind) {
    const std::string computer = ComputerName();
    const Unheard unheard = ClosedPort();
    const XtPtr client = Stream();
    const Failure refused = ConnectFailed(computer + ":0 : " + Host() + ":" + unheard.port,
                                          "::connect", 10061, u"Connection refused");
    EnableAllRouters();
    EXPECT_EQ(FailureOf([&] { client->Connect(Host(), unheard.port.c_str()); }), refused);
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
    client->Close();
    EXPECT_EQ(Sink().Take(),
              (Records{{Error, refused.text},
                       {ConnectionTrace, u"Disconnected, " + TextEnds(computer, "0", "", "")}}));
}

TEST_P(ExtendedFailure, TheConnectThatWasRefusedMaySucceedLater) {
    const Unheard unheard = ClosedPort();
    const XtPtr client = Stream();
    EXPECT_NE(FailureOf([&] { client->Connect(Host(), unheard.port.c_str()); }).code, 0);
    unheard.socket->Listen();
    const auto connect = [&] { client->Connect(Host(), unheard.port.c_str()); };
    const int code = FailureOf(connect).code;
    if (Support::RunsOnWine() && code == 10053) return;
    EXPECT_EQ(code, 0);
    ExpectExchange(*client, *Accept(*unheard.socket).socket);
}

TEST_P(ExtendedFailure, AConnectThatDoesNotBlockThrowsAndCompletesLater) {
    const XtPtr listener = Listening();
    const std::string port = PortOf(*listener);
    const XtPtr client = Stream();
    EXPECT_TRUE(client->SetNonBlocking());
    const std::string ends = ComputerName() + ":0 : " + Host() + ":" + port;
    const auto failed = [&](int number, std::u16string_view numberText) {
        return ConnectFailed(ends, "::connect", number, numberText);
    };
    const auto connect = [&] { client->Connect(Host(), port.c_str()); };
    EXPECT_EQ(FailureOf(connect), failed(10035, u"Resource temporarily unavailable"));
    EXPECT_TRUE(Eventually([&] {
        const Failure failure = FailureOf(connect);
        if (failure == failed(10056, u"Socket is already connected")) return true;
        EXPECT_EQ(failure, failed(10037, u"Operation already in progress"));
        return false;
    }));
    EXPECT_EQ(client->GetStatus(), VelNet::STATUS_NONE);
    const XtPtr server = Accept(*listener).socket;
    SendAll(*client, "abc");
    EXPECT_EQ(ReceiveExactly(*server, 3), "abc");
}

TEST_P(ExtendedFailure, NoPortAndNoAddressCannotBeConnectedTo) {
    const XtPtr socket = Stream();
    const std::string ends = ComputerName() + ":0 : " + Host() + ":0";
    const Failure failure = FailureOf([&] { socket->Connect(Host(), "0"); });
    EXPECT_TRUE(failure ==
                    ConnectFailed(ends, "::connect", 10049, u"Cannot assign requested address") ||
                (Support::RunsOnWine() && failure.code == 10061))
        << testing::PrintToString(failure);
}

TEST_P(ExtendedFailure, ListeningWithoutABindFailsWithoutAddresses) {
    const XtPtr socket = Stream();
    EnableAllRouters();
    const Failure failure = ListenFailed("", 10022, u"Invalid argument");
    EXPECT_EQ(FailureOf([&] { socket->Listen(); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_NONE);
}

TEST_P(ExtendedFailure, ATakenPortIsRefused) {
    const XtPtr listener = Listening();
    const std::string port = PortOf(*listener);
    const XtPtr other = Stream();
    EnableOnly({Error});
    const Failure failure =
        BindFailed(std::string(Host()) + " : " + port, "::bind", 10048, u"Address already in use");
    EXPECT_EQ(FailureOf([&] { other->Bind(Host(), port.c_str()); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    other->Bind(Host(), "0");
    EXPECT_NE(PortOf(*other), port);
}

TEST_P(ExtendedFailure, ABoundSocketCannotBeBoundAgain) {
    const XtPtr socket = Bound(Stream());
    EXPECT_EQ(FailureOf([&] { socket->Bind(Host(), "0"); }),
              BindFailed(std::string(Host()) + " : 0", "::bind", 10022, u"Invalid argument"));
}

TEST_P(ExtendedFailure, AnAddressThatIsNotThisMachinesIsRefused) {
    const XtPtr socket = Stream();
    const std::string host = ForeignOf(GetParam());
    EXPECT_EQ(FailureOf([&] { socket->Bind(host.c_str(), "0"); }),
              BindFailed(host + " : 0", "::bind", 10049, u"Cannot assign requested address"));
}

// The number is not in the table of errors.
TEST_P(ExtendedFailure, AnUnknownServiceIsAFailureWithItsTexts) {
    const XtPtr socket = Stream();
    EnableOnly({Error});
    Failure failure = BindFailed(std::string(Host()) + " : no-such-service", "::getaddrinfo", 10109,
                                 u"Unknown error");
    failure.code = -1;
    EXPECT_EQ(FailureOf([&] { socket->Bind(Host(), "no-such-service"); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_P(ExtendedFailure, AnUnresolvableHostIsAFailureWithItsTexts) {
    const XtPtr socket = Stream();
    EnableAllRouters();
    const std::string host = UnresolvableHost();
    const std::string texts = host + " : 80";
    const Failure ofBind = FailureOf([&] { socket->Bind(host.c_str(), "80"); });
    const Failure ofConnect = FailureOf([&] { socket->Connect(host.c_str(), "80"); });
    const int number = ofBind.code;
    EXPECT_TRUE(IsResolversNumber(number)) << number;
    EXPECT_EQ(ofBind, BindFailed(texts, "::getaddrinfo", number, ResolversText(number)));
    EXPECT_EQ(ofConnect, ConnectFailed(texts, "::getaddrinfo", number, ResolversText(number)));
    EXPECT_EQ(Sink().Take(), (Records{{Error, ofBind.text}, {Error, ofConnect.text}}));
}

TEST_P(ExtendedFailure, ClosingTwiceFailsTheSecondTime) {
    const XtPtr socket = Bound(Stream());
    EnableAllRouters();
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
    EXPECT_EQ(socket->GetHandle(), ~0ULL);
    const Failure failure =
        CloseFailed(std::string(Host()) + " : 0", 10038, u"Socket operation on nonsocket");
    EXPECT_EQ(FailureOf([&] { socket->Close(); }), failure);
    EXPECT_EQ(Sink().Take(),
              (Records{{ConnectionTrace, u"Disconnected, " + TextEnds(Host(), "0", "", "")},
                       {Error, failure.text}}));
}

TEST_P(ExtendedFailure, OnAClosedSocketEveryOperationFails) {
    const XtPtr socket = Stream();
    socket->Close();
    constexpr int number = 10038;
    constexpr std::u16string_view text = u"Socket operation on nonsocket";
    const std::string host = Host();
    EXPECT_EQ(FailureOf([&] { socket->Bind(Host(), "0"); }),
              BindFailed(host + " : 0", "::bind", number, text));
    EXPECT_EQ(FailureOf([&] { socket->Listen(); }), ListenFailed("", number, text));
    EXPECT_EQ(FailureOf([&] { Accept(*socket); }), AcceptFailed("", number, text));
    EXPECT_EQ(FailureOfReceive(*socket), XtReceiveFailed(number, text));
    EXPECT_EQ(FailureOf([&] { socket->Send("x", 1); }), XtSendFailed(number, text));
    EXPECT_EQ(FailureOf([&] { socket->Connect(Host(), "9"); }),
              ConnectFailed(ComputerName() + ":0 : " + host + ":9", "::connect", number, text));
    EXPECT_FALSE(socket->SetNonBlocking());
    EXPECT_FALSE(socket->IsDataAvailable());
}

TEST_P(ExtendedFailure, OnAClosedSocketTheOptionsThrow) {
    const XtPtr socket = Stream();
    socket->Close();
    EnableOnly({Error});
    const auto failed = [](const std::string& operation, const std::string& description) {
        return XtFailure(operation, description, "::setsockopt", "", 10038,
                         u"Socket operation on nonsocket");
    };
    const Failure receive = failed("SetReceiveTimeout", "cannot set recv timeout");
    const Failure send = failed("SetSendTimeout", "cannot set send timeout");
    const Failure reuse = failed("SetReuseAddress", "cannot set reuse address");
    const Failure broadcast = BroadcastFailed(10038, u"Socket operation on nonsocket");
    EXPECT_EQ(FailureOf([&] { socket->SetReceiveTimeout(5); }), receive);
    EXPECT_EQ(FailureOf([&] { socket->SetSendTimeout(5); }), send);
    EXPECT_EQ(FailureOf([&] { socket->SetReuseAddress(); }), reuse);
    EXPECT_EQ(FailureOf([&] { socket->SetSocketForBroadcast(); }), broadcast);
    EXPECT_EQ(Sink().Take(), (Records{{Error, receive.text},
                                      {Error, send.text},
                                      {Error, reuse.text},
                                      {Error, broadcast.text}}));
}

TEST_P(ExtendedFailure, ABroadcastOptionOnAStreamIsTheSystemsToRefuse) {
    const XtPtr socket = Stream();
    EnableOnly({Error});
    const Failure failure = FailureOf([&] { socket->SetSocketForBroadcast(); });
    if (Support::RunsOnWine() && failure.code == 0) return;
    EXPECT_EQ(failure, BroadcastFailed(10042, u"Bad protocol option"));
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

}  // namespace
}  // namespace Loopback
