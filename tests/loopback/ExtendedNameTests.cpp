// Which addresses the extended socket means: this machine by its names, and one IP version beside
// the other.
#include <loopback/ExtendedTest.h>
#include <loopback/ThisProcess.h>
#include <support/Wine.h>

#include <algorithm>
#include <cctype>
#include <stdexcept>
#include <utility>

namespace Loopback {
namespace {

using VelNet::CreateSocketXt;
using VelNet::Socket;

class ExtendedName : public LoopbackTest {};

XtPtr OwnStream() {
    XtPtr socket = CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    SetPatience(*socket);
    return socket;
}

XtPtr OwnDatagrams() {
    XtPtr socket = CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
    SetPatience(*socket);
    return socket;
}

Failure CreateFailed(const std::u16string& call, int number, std::u16string_view numberText) {
    return SystemFailure(u"VelNet::CreateSocketXt , cannot create a socket , " + call + u" ,  ",
                         number, numberText);
}

std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

TEST_F(ExtendedName, SpecialAddressesHaveATextForEachVersion) {
    const XtPtr socket = OwnStream();
    const auto text = [&](int kind, SocketXt::ADDR_FAMILY family) {
        const auto special = static_cast<VelNet::SpecialAddressKind>(kind);
        return std::string(socket->GetSpecialAddress(special, family).c_str());
    };
    EXPECT_EQ(text(VelNet::SPECIAL_ANY, Ipv4), "0.0.0.0");
    EXPECT_EQ(text(VelNet::SPECIAL_ANY, Ipv6), "::0");
    EXPECT_EQ(text(VelNet::SPECIAL_LOOPBACK, Ipv4), "127.0.0.1");
    EXPECT_EQ(text(VelNet::SPECIAL_LOOPBACK, Ipv6), "::1");
    EXPECT_EQ(text(VelNet::SPECIAL_BROADCAST, Ipv4), "255.255.255.255");
    EXPECT_EQ(text(VelNet::SPECIAL_BROADCAST, Ipv6), "ff02::1");
    for (const SocketXt::ADDR_FAMILY family : {SocketXt::FAMILY_UNKNOWN, Ipv4, Ipv6}) {
        EXPECT_EQ(Lowered(text(VelNet::SPECIAL_THIS_MACHINE, family)),
                  Lowered(ThisProcess::HostName()));
        EXPECT_EQ(text(0, family), "");
        EXPECT_EQ(text(5, family), "");
    }
    EXPECT_EQ(text(VelNet::SPECIAL_ANY, SocketXt::FAMILY_UNKNOWN), "");
}

TEST_F(ExtendedName, ThisMachineCanBeReachedByItsName) {
    const XtPtr listener = OwnStream();
    listener->Bind(VelNet::SPECIAL_THIS_MACHINE, "0");
    listener->Listen();
    const XtPtr client = OwnStream();
    const std::string port = PortOf(*listener);
    const std::string computer = ComputerName();
    EnableOnly({ConnectionTrace});
    client->Connect(VelNet::SPECIAL_THIS_MACHINE, port.c_str());
    EXPECT_EQ(
        Sink().Take(),
        (Records{{ConnectionTrace, u"Connected, " + TextEnds(computer, "0", computer, port)}}));
    ExpectExchange(*client, *Accept(*listener).socket);
}

// The name may stand for an address of the other version first, which is passed over.
TEST_F(ExtendedName, ANameIsResolvedAndKeptAsItStands) {
    if (const std::string lacking = Lacking(Ipv4); !lacking.empty()) GTEST_SKIP() << lacking;
    const XtPtr receiver = DatagramXt(Ipv4);
    receiver->Bind("localhost", "0");
    const std::string port = PortOf(*receiver);
    const XtPtr sender = DatagramXt(Ipv4);
    sender->Bind("localhost", "0");
    EnableOnly({PacketTrace});
    EXPECT_EQ(SendTo(*sender, "abc", "localhost", port), 3);
    EXPECT_EQ(ReceiveFrom(*receiver), (Received{"abc", "127.0.0.1", PortOf(*sender)}));
    const Records records = Sink().Take();
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[1],
              (Record{PacketTrace, u"Recvfrom 3 bytes, " +
                                       TextEnds("localhost", "0", "127.0.0.1", PortOf(*sender))}));
}

TEST_F(ExtendedName, AConnectionByNameKeepsTheName) {
    if (const std::string lacking = Lacking(Ipv4); !lacking.empty()) GTEST_SKIP() << lacking;
    const XtPtr listener = ListeningXt(Ipv4);
    const std::string port = PortOf(*listener);
    const XtPtr client = StreamXt(Ipv4);
    const std::string computer = ComputerName();
    EnableOnly({ConnectionTrace});
    client->Connect("localhost", port.c_str());
    EXPECT_EQ(
        Sink().Take(),
        (Records{{ConnectionTrace, u"Connected, " + TextEnds(computer, "0", "localhost", port)}}));
    ExpectExchange(*client, *Accept(*listener).socket);
}

TEST_F(ExtendedName, AnEmptyHostIsThisMachine) {
    const XtPtr socket = OwnDatagrams();
    socket->Bind("", "0");
    EXPECT_EQ(socket->GetStatus(), VelNet::STATUS_IDLE);
    EXPECT_NE(PortOf(*socket), "0");
    EnableOnly({ConnectionTrace});
    socket->Close();
    EXPECT_EQ(Sink().Take(),
              (Records{{ConnectionTrace, u"Disconnected, " + TextEnds("", "0", "", "")}}));
}

TEST_F(ExtendedName, NoHostAndNoPortAreNothing) {
    const XtPtr socket = OwnDatagrams();
    EnableOnly({Error});
    const Failure failure = BindFailed("", "::getaddrinfo", 11001, u"host not found");
    EXPECT_EQ(FailureOf([&] { socket->Bind(nullptr, nullptr); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
}

TEST_F(ExtendedName, WithoutAHostAPortIsTheLoopbackAddress) {
    const XtPtr socket = OwnDatagrams();
    socket->Bind(nullptr, "0");
    const XtPtr sender = OwnDatagrams();
    EXPECT_EQ(sender->SendTo("abc", 3, VelNet::SPECIAL_LOOPBACK, PortOf(*socket).c_str()), 3);
    EXPECT_EQ(ReceiveFrom(*socket).bytes, "abc");
}

// Two sockets of one port, the first of IPv4. The other's port may be somebody else's: then another
// port has to serve.
struct SideBySide {
    XtPtr ipv4;
    XtPtr ipv6;
};

template <class Maker>
SideBySide BindSideBySide(Maker make) {
    constexpr int attempts = 100;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        SideBySide pair = {make(Ipv4), make(Ipv6)};
        pair.ipv4->Bind(VelNet::SPECIAL_ANY, "0");
        const std::string port = PortOf(*pair.ipv4);
        const Failure failure =
            FailureOf([&] { pair.ipv6->Bind(VelNet::SPECIAL_ANY, port.c_str()); });
        if (failure.code == 0) return pair;
        EXPECT_EQ(failure.code, 10048);
    }
    throw std::runtime_error("no port is free in both versions");
}

class ExtendedNameOfBothVersions : public LoopbackTest {
protected:
    void SetUp() override {
        const std::string lacking = Lacking(Ipv4) + Lacking(Ipv6);
        if (!lacking.empty()) GTEST_SKIP() << lacking;
    }
};

TEST_F(ExtendedNameOfBothVersions, DatagramsOfOnePortGoToTheSocketOfTheirVersion) {
    const SideBySide pair = BindSideBySide(DatagramXt);
    const std::string port = PortOf(*pair.ipv4);
    EXPECT_EQ(PortOf(*pair.ipv6), port);
    SendTo(*DatagramXt(Ipv4), "four", "127.0.0.1", port);
    SendTo(*DatagramXt(Ipv6), "six", "::1", port);
    EXPECT_EQ(ReceiveFrom(*pair.ipv4).bytes, "four");
    EXPECT_EQ(ReceiveFrom(*pair.ipv6).bytes, "six");
    EXPECT_FALSE(pair.ipv4->IsDataAvailable());
    EXPECT_FALSE(pair.ipv6->IsDataAvailable());
}

TEST_F(ExtendedNameOfBothVersions, ConnectionsToOnePortGoToTheListenerOfTheirVersion) {
    const SideBySide pair = BindSideBySide(StreamXt);
    const std::string port = PortOf(*pair.ipv4);
    for (const XtPtr* listener : {&pair.ipv4, &pair.ipv6}) {
        (*listener)->Listen();
    }
    for (const XtPtr* listener : {&pair.ipv6, &pair.ipv4}) {
        const SocketXt::ADDR_FAMILY family = (*listener)->GetAddressFamily();
        const XtPtr client = StreamXt(family);
        client->Connect(LoopbackOf(family), port.c_str());
        const AcceptedXt accepted = Accept(**listener);
        EXPECT_EQ(accepted.host, LoopbackOf(family));
        EXPECT_EQ(accepted.port, PortOf(*client));
    }
}

TEST_F(ExtendedNameOfBothVersions, AListenerOfIpv6IsNotReachedByIpv4) {
    const SideBySide pair = BindSideBySide(StreamXt);
    pair.ipv6->Listen();
    const std::string port = PortOf(*pair.ipv6);
    EXPECT_EQ(FailureOf([&] { StreamXt(Ipv4)->Connect("127.0.0.1", port.c_str()); }).code, 10061);
    StreamXt(Ipv6)->Connect("::1", port.c_str());
}

TEST_F(ExtendedName, ASocketIsOfTheVersionOfTheComputersName) {
    for (const SocketXt::ADDR_FAMILY family : {Ipv4, Ipv6}) {
        const Machine::Name name(LoopbackOf(family));
        if (!name.IsSet()) GTEST_SKIP() << "the system lets no test change the computer's name";
        EXPECT_EQ(OwnStream()->GetAddressFamily(), family);
        EXPECT_EQ(OwnDatagrams()->GetAddressFamily(), family);
        EXPECT_EQ(ComputerName(), LoopbackOf(family));
    }
}

// Without asking anybody: no name has an empty part.
TEST_F(ExtendedName, AComputerWhoseNameNobodyKnowsHasSocketsAllTheSame) {
    const Machine::Name name("no..such");
    if (!name.IsSet()) GTEST_SKIP() << "the system lets no test change the computer's name";
    EnableOnly({Error});
    const Failure failure = FailureOf([] { EXPECT_TRUE(OwnStream()->IsValid()); });
    if (Support::RunsOnWine()) {
        EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
        EXPECT_EQ(failure,
                  CreateFailed(u"::getaddrinfo", failure.code, ResolversText(failure.code)));
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
        return;
    }
    EXPECT_EQ(failure.code, 0) << testing::PrintToString(failure);
    EXPECT_EQ(Sink().Take(), Records{});
}

// The number 10043 stands in the table of errors without its offset, so it is unknown.
TEST_F(ExtendedName, APairOfTypeAndProtocolThatDoesNotMatchIsRefused) {
    EnableOnly({Error});
    const Failure refused = {CreateFailed(u"::socket", 10043, u"Unknown error").text, -1};
    EXPECT_EQ(FailureOf([] { CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_TCP); }),
              refused);
    EXPECT_EQ(FailureOf([] { CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_UDP); }),
              refused);
    EXPECT_EQ(Sink().Take(), (Records{{Error, refused.text}, {Error, refused.text}}));
}

// What is not named is left to the system, which takes it for a stream; the socket's state does
// not learn of the binding.
TEST_F(ExtendedName, AnUnknownTypeAndProtocolAreLeftToTheSystem) {
    const XtPtr listener = CreateSocketXt(static_cast<Socket::SOCKET_TYPE>(5),
                                          static_cast<Socket::SOCKET_PROTOCOL>(7));
    listener->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    EXPECT_EQ(listener->GetStatus(), VelNet::STATUS_NONE);
    listener->Listen();
    const XtPtr client = OwnStream();
    client->Connect(VelNet::SPECIAL_LOOPBACK, PortOf(*listener).c_str());
    ExpectExchange(*client, *Accept(*listener).socket);
}

TEST_F(ExtendedName, SocketsAreToldApartByTheirHandles) {
    const XtPtr one = OwnStream();
    const XtPtr other = OwnStream();
    const SocketPtr classic = StreamSocket();
    EXPECT_TRUE(one->IsSameSocket(*one));
    EXPECT_FALSE(one->IsSameSocket(*other));
    EXPECT_FALSE(one->IsSameSocket(*classic));
    EXPECT_FALSE(classic->IsSameSocket(*one));
    one->Close();
    classic->Close();
    EXPECT_TRUE(one->IsSameSocket(*classic));
    EXPECT_TRUE(classic->IsSameSocket(*one));
}

TEST_F(ExtendedName, AClassicAndAnExtendedSocketSpeakToEachOther) {
    if (const std::string lacking = Lacking(Ipv4); !lacking.empty()) GTEST_SKIP() << lacking;
    const SocketPtr listener = Listening();
    const XtPtr client = StreamXt(Ipv4);
    client->Connect("127.0.0.1", std::to_string(PortOf(*listener)).c_str());
    const SocketPtr server = Accepted(*listener);
    EXPECT_EQ(std::to_string(server->GetRemoteAddress().GetPort()), PortOf(*client));
    ExpectExchange(*client, *server);
}

}  // namespace
}  // namespace Loopback
