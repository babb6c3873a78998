// What the operations of the extended socket throw when the system fails them.
#include <loopback/ExtendedTest.h>
#include <loopback/posix/FaultTest.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <string>

namespace Loopback {
namespace {

using namespace SystemCalls;

class ExtendedFault : public ExtendedTest {
protected:
    // The operation throws the failure that belongs to each number of the system, and logs it.
    template <class FailureFor, class Operation>
    void ExpectEach(SystemCall call, FailureFor failureFor, Operation operation) {
        EnableOnly({Error});
        for (const Fault& fault : Faults) {
            Failure failure = failureFor(fault.winsock, fault.text);
            failure.code = fault.Code();
            const FailingCall fails(call, fault.system);
            EXPECT_EQ(FailureOf(operation), failure);
            EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
            EXPECT_GE(fails.Seen(), 1U);
        }
    }

    static std::string HostAnd(const std::string& port) { return Host() + (" : " + port); }
};

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedFault, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(ExtendedFault, OfBindingIsThrown) {
    const XtPtr socket = Stream();
    ExpectEach(
        SystemCall::Bind,
        [](int number, std::u16string_view text) {
            return BindFailed(HostAnd("0"), "::bind", number, text);
        },
        [&] { socket->Bind(Host(), "0"); });
    socket->Bind(Host(), "0");
}

TEST_P(ExtendedFault, OfListeningIsThrown) {
    const XtPtr socket = Bound(Stream());
    ExpectEach(
        SystemCall::Listen,
        [](int number, std::u16string_view text) {
            return ListenFailed(HostAnd("0"), number, text);
        },
        [&] { socket->Listen(); });
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_NONE);
}

TEST_P(ExtendedFault, OfConnectingIsThrownAndTheNextConnectSucceeds) {
    const XtPtr listener = Listening();
    const std::string port = PortOf(*listener);
    const XtPtr client = Stream();
    const std::string ends = ComputerName() + ":0 : " + Host() + ":" + port;
    ExpectEach(
        SystemCall::Connect,
        [&](int number, std::u16string_view text) {
            return ConnectFailed(ends, "::connect", number, text);
        },
        [&] { client->Connect(Host(), port.c_str()); });
    client->Connect(Host(), port.c_str());
    ExpectExchange(*client, *Accept(*listener).socket);
}

TEST_P(ExtendedFault, OfAcceptingIsThrownAndTheConnectionWaits) {
    const XtPtr listener = Listening();
    const XtPtr client = Stream();
    client->Connect(Host(), PortOf(*listener).c_str());
    ExpectEach(
        SystemCall::Accept4,
        [](int number, std::u16string_view text) {
            return AcceptFailed(HostAnd("0"), number, text);
        },
        [&] {
            XtPtr accepted;
            ReturnString host;
            ReturnString port;
            listener->Accept(accepted, host, port);
        });
    ExpectExchange(*client, *Accept(*listener).socket);
}

TEST_P(ExtendedFault, OfTransfersIsThrownAndTheConnectionLives) {
    const XtConnection connection = Connected();
    ExpectEach(
        SystemCall::Recv,
        [](int number, std::u16string_view text) { return XtReceiveFailed(number, text); },
        [&] { ReceiveSome(*connection.server); });
    ExpectEach(
        SystemCall::Send,
        [](int number, std::u16string_view text) { return XtSendFailed(number, text); },
        [&] { connection.server->Send("abc", 3); });
    ExpectExchange(*connection.client, *connection.server);
}

TEST_P(ExtendedFault, OfDatagramsIsThrown) {
    const XtPtr receiver = Bound(Datagrams());
    const std::string port = PortOf(*receiver);
    const XtPtr sender = Bound(Datagrams());
    ExpectEach(
        SystemCall::Sendto,
        [&](int number, std::u16string_view text) {
            return SendToFailed(HostAnd(port), "::sendto", number, text);
        },
        [&] { SendTo(*sender, "abc", Host(), port); });
    ExpectEach(
        SystemCall::Recvmsg,
        [](int number, std::u16string_view text) { return RecvFromFailed(number, text); },
        [&] { ReceiveFrom(*receiver); });
    EXPECT_EQ(SendTo(*sender, "abc", Host(), port), 3);
    EXPECT_EQ(ReceiveFrom(*receiver).bytes, "abc");
}

TEST_P(ExtendedFault, OfOptionsIsThrown) {
    const XtPtr socket = Datagrams();
    const auto expectOption = [&](const std::string& operation, const std::string& description,
                                  const std::string& call, auto set) {
        ExpectEach(
            SystemCall::Setsockopt,
            [&](int number, std::u16string_view text) {
                return XtFailure(operation, description, call, "", number, text);
            },
            set);
    };
    expectOption("SetReceiveTimeout", "cannot set recv timeout", "::setsockopt",
                 [&] { socket->SetReceiveTimeout(5); });
    expectOption("SetSendTimeout", "cannot set send timeout", "::setsockopt",
                 [&] { socket->SetSendTimeout(5); });
    expectOption("SetReuseAddress", "cannot set reuse address", "::setsockopt",
                 [&] { socket->SetReuseAddress(); });
    expectOption("SetSocketForBroadcast", "cannot set socket option for broadcast",
                 "::setsockopt(SO_BROADCAST)", [&] { socket->SetSocketForBroadcast(); });
    const char* const group = GetParam() == Ipv4 ? "239.1.2.3" : "ff02::1:2:3";
    // Required: the names are IPv4's for both families.
    expectOption("SetSocketForMulticast", "cannot set option for multicast",
                 "::setsockopt(IP_ADD_MEMBERSHIP)",
                 [&] { socket->SetSocketForMulticast(group, 0); });
    expectOption("SetSocketForMulticast", "cannot set option for multicast",
                 "::setsockopt(IP_DROP_MEMBERSHIP)",
                 [&] { socket->SetSocketForMulticast(group, 1); });
}

TEST_P(ExtendedFault, OfTheBlockingModeAndTheWaitingBytesIsAnAnswerOnly) {
    const XtPtr socket = Bound(Datagrams());
    EnableOnly({Error});
    const FailingCall fails(SystemCall::Ioctl, EIO);
    EXPECT_FALSE(socket->SetNonBlocking());
    EXPECT_FALSE(socket->IsDataAvailable());
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_P(ExtendedFault, OfClosingIsNone) {
    const XtPtr socket = Stream();
    EnableOnly({Error});
    const HookedCall closes(SystemCall::Close, [](const Call& call) {
        call.Make();
        return call.Fail(EIO);
    });
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
    EXPECT_EQ(closes.Seen(), 1U);
    EXPECT_EQ(Sink().Take(), Records{});
}

Failure NotCreated(int number, std::u16string_view text) {
    return SystemFailure(u"VelNet::CreateSocketXt , cannot create a socket , ::socket ,  ", number,
                         text);
}

TEST_P(ExtendedFault, OfCreatingIsThrown) {
    ExpectEach(SystemCall::Socket, NotCreated, [] {
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    });
}

TEST_P(ExtendedFault, OfCreatingForAChosenVersionIsThrown) {
    ExpectEach(SystemCall::Socket, NotCreated, [] {
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP,
                               GetParam());
    });
}

// A record's text: a number below 32 would be a control character.
std::u16string Logged(std::u16string text) {
    const std::size_t memory = text.find(u'\b');
    return memory == text.npos ? text : text.replace(memory, 1, u"\\u0008");
}

struct ResolverFault {
    int system;
    int winsock;
    std::u16string_view text;
    int code;
};

TEST_P(ExtendedFault, OfTheResolverIsThrown) {
    constexpr ResolverFault faults[] = {
        {EAI_NONAME, 11001, u"host not found", 11001},
        {EAI_AGAIN, 11002, u"Nonauthoritative host not found", 11002},
        {EAI_FAIL, 11003, u"This is a nonrecoverable error", 11003},
        {EAI_NODATA, 11004, u"Valid name, no data record of requested type", 11004},
        {EAI_MEMORY, 8, u"Unknown error", -1},
        {EAI_SERVICE, 10109, u"Unknown error", -1},
        {EMFILE, 10024, u"Too many open files", 10024},
    };
    const XtPtr socket = Stream();
    EnableOnly({Error});
    for (const ResolverFault& fault : faults) {
        const FailingCall fails(SystemCall::Getaddrinfo, fault.system);
        Failure failure =
            BindFailed("some.example : 0", "::getaddrinfo", fault.winsock, fault.text);
        failure.code = fault.code;
        EXPECT_EQ(FailureOf([&] { socket->Bind("some.example", "0"); }), failure);
        EXPECT_EQ(Sink().Take(), (Records{{Error, Logged(failure.text)}}));
    }
}

}  // namespace
}  // namespace Loopback
