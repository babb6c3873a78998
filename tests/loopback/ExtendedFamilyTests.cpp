// Extended sockets of an IP version that the program chooses, whatever this computer's name stands
// for.
#include <loopback/ExtendedTest.h>

namespace Loopback {
namespace {

using VelNet::CreateSocketXt;
using VelNet::Socket;

XtPtr Stream(SocketXt::ADDR_FAMILY family) {
    XtPtr socket = CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP, family);
    SetPatience(*socket);
    return socket;
}

XtPtr Datagrams(SocketXt::ADDR_FAMILY family) {
    XtPtr socket = CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, family);
    SetPatience(*socket);
    return socket;
}

// Not ExtendedTest, which needs a name for this computer.
class ExtendedFamily : public LoopbackTest,
                       public testing::WithParamInterface<SocketXt::ADDR_FAMILY> {
protected:
    void SetUp() override {
        const Failure failure =
            FailureOf([] { Datagrams(GetParam())->Bind(VelNet::SPECIAL_LOOPBACK, "0"); });
        if (failure.code == 10049) GTEST_SKIP() << "no loopback address of this IP version";
    }
};

INSTANTIATE_TEST_SUITE_P(Versions, ExtendedFamily, testing::Values(Ipv4, Ipv6), NameOfVersion);

TEST_P(ExtendedFamily, AStreamCarriesBytesInTheChosenVersion) {
    const XtPtr listener = Bound(Stream(GetParam()));
    listener->Listen();
    const XtPtr client = Stream(GetParam());
    client->Connect(VelNet::SPECIAL_LOOPBACK, PortOf(*listener).c_str());
    const AcceptedXt accepted = Accept(*listener);
    EXPECT_EQ(accepted.host, LoopbackOf(GetParam()));
    EXPECT_EQ(client->GetAddressFamily(), GetParam());
    EXPECT_EQ(accepted.socket->GetAddressFamily(), GetParam());
    ExpectExchange(*client, *accepted.socket);
}

TEST_P(ExtendedFamily, ADatagramGoesFromAndToTheChosenVersion) {
    const XtPtr receiver = Bound(Datagrams(GetParam()));
    const XtPtr sender = Bound(Datagrams(GetParam()));
    EXPECT_EQ(sender->SendTo("abc", 3, VelNet::SPECIAL_LOOPBACK, PortOf(*receiver).c_str()), 3);
    EXPECT_EQ(ReceiveFrom(*receiver), (Received{"abc", LoopbackOf(GetParam()), PortOf(*sender)}));
}

TEST_P(ExtendedFamily, TheVersionOfTheComputersNameDoesNotCount) {
    const Machine::Name name(LoopbackOf(GetParam() == Ipv6 ? Ipv4 : Ipv6));
    if (!name.IsSet()) GTEST_SKIP() << "the system lets no test change the computer's name";
    EXPECT_EQ(Stream(GetParam())->GetAddressFamily(), GetParam());
    EXPECT_NE(Stream(SocketXt::FAMILY_UNKNOWN)->GetAddressFamily(), GetParam());
}

class ExtendedFamilyOfNone : public LoopbackTest {};

TEST_F(ExtendedFamilyOfNone, UnknownIsTheVersionOfTheComputersName) {
    const XtPtr own = CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    EXPECT_EQ(Stream(SocketXt::FAMILY_UNKNOWN)->GetAddressFamily(), own->GetAddressFamily());
}

TEST_F(ExtendedFamilyOfNone, AVersionWithoutANameIsRefused) {
    const Failure refused =
        SystemFailure(u"VelNet::CreateSocketXt , cannot create a socket , ::socket ,  ", 10047,
                      u"Address family not supported by protocol family");
    EnableOnly({Error});
    for (const int unnamed : {3, -1, 23}) {
        EXPECT_EQ(FailureOf([&] { Stream(static_cast<SocketXt::ADDR_FAMILY>(unnamed)); }), refused);
        EXPECT_EQ(Sink().Take(), (Records{{Error, refused.text}}));
    }
}

}  // namespace
}  // namespace Loopback
