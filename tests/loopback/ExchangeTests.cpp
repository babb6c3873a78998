// A client and a server talk, and the log tells of it.
#include <loopback/LoopbackTest.h>

#include <cstdio>

namespace Loopback {
namespace {

class Exchange : public LoopbackTest {};

std::u16string Sent(int count, const std::u16string& endpoints) {
    return u"Sent " + Widen(std::to_string(count)) + u" bytes, " + endpoints;
}

std::u16string Received(int count, const std::u16string& endpoints) {
    return u"Received " + Widen(std::to_string(count)) + u" bytes, " + endpoints;
}

const std::u16string Nowhere = Endpoints("0.0.0.0", 0, "0.0.0.0", 0);

TEST_F(Exchange, ClientAndServerWriteEveryRecord) {
    EnableAllRouters();
    const SocketPtr listener = Listening();
    const unsigned short port = PortOf(*listener);
    const Connection connection = ConnectedThrough(*listener);
    const unsigned short clientPort = PortOf(*connection.client);
    SendAll(*connection.client, "A\r\n");
    EXPECT_EQ(ReceiveExactly(*connection.server, 3), "A\r\n");
    connection.server->Close();
    EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
    connection.client->Close();
    listener->Close();

    const std::u16string client = EndpointsOf(clientPort, port);
    const std::u16string server = EndpointsOf(port, clientPort);
    EXPECT_EQ(Sink().Take(), (Records{
                                 {ConnectionTrace, u"Connected, " + client},
                                 {ConnectionTrace, u"Connected, " + server},
                                 {PacketTrace, Sent(3, client)},
                                 {VerbosePacketTrace, Sent(3, client) + u", data: 410D0A"},
                                 {PacketTrace, Received(3, server)},
                                 {VerbosePacketTrace, Received(3, server) + u", data: 410D0A"},
                                 {ConnectionTrace, u"Disconnected, " + server},
                                 {Error, ConnectionClosed().text},
                                 {ConnectionTrace, u"Disconnected, " + client},
                                 {ConnectionTrace, u"Disconnected, " + Nowhere},
                             }));
}

TEST_F(Exchange, WithoutRoutersNothingIsWritten) {
    {
        const Connection connection = Connected();
        ExpectExchange(*connection.client, *connection.server);
        connection.server->Close();
        EXPECT_EQ(FailureOfReceive(*connection.client), ConnectionClosed());
    }
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(Exchange, ThePlainPacketTraceAloneHasNoData) {
    const Connection connection = Connected();
    const unsigned short clientPort = PortOf(*connection.client);
    const unsigned short serverPort = PortOf(*connection.server);
    EnableOnly({PacketTrace});
    SendAll(*connection.client, "abc");
    ReceiveExactly(*connection.server, 3);
    EXPECT_EQ(Sink().Take(),
              (Records{{PacketTrace, Sent(3, EndpointsOf(clientPort, serverPort))},
                       {PacketTrace, Received(3, EndpointsOf(serverPort, clientPort))}}));
}

TEST_F(Exchange, TheVerbosePacketTraceAloneIsTheOnlyOneWritten) {
    const Connection connection = Connected();
    const unsigned short clientPort = PortOf(*connection.client);
    const unsigned short serverPort = PortOf(*connection.server);
    EnableOnly({VerbosePacketTrace});
    SendAll(*connection.client, "abc");
    ReceiveExactly(*connection.server, 3);
    const std::u16string data = u", data: 616263";
    EXPECT_EQ(
        Sink().Take(),
        (Records{{VerbosePacketTrace, Sent(3, EndpointsOf(clientPort, serverPort)) + data},
                 {VerbosePacketTrace, Received(3, EndpointsOf(serverPort, clientPort)) + data}}));
}

// Bytes are shown as signed numbers: those with the highest bit have eight digits.
TEST_F(Exchange, TheVerbosePacketTraceShowsBytesAbove7FWithEightDigits) {
    std::string bytes;
    std::string digits;
    for (unsigned int byte = 0; byte <= 0xFF; ++byte) {
        char rendered[16];
        std::snprintf(rendered, sizeof rendered, byte < 0x80 ? "%02X" : "FFFFFF%02X", byte);
        digits += rendered;
        bytes += static_cast<char>(byte);
    }

    const Connection connection = Connected();
    const unsigned short clientPort = PortOf(*connection.client);
    const unsigned short serverPort = PortOf(*connection.server);
    EnableOnly({VerbosePacketTrace});
    SendAll(*connection.client, bytes);
    EXPECT_EQ(ReceiveExactly(*connection.server, 256), bytes);
    EXPECT_EQ(Sink().Take(),
              (Records{{VerbosePacketTrace, Sent(256, EndpointsOf(clientPort, serverPort)) +
                                                u", data: " + Widen(digits)},
                       {VerbosePacketTrace, Received(256, EndpointsOf(serverPort, clientPort)) +
                                                u", data: " + Widen(digits)}}));
}

TEST_F(Exchange, SendingNothingIsRecordedWithoutData) {
    const Connection connection = Connected();
    const std::u16string endpoints =
        EndpointsOf(PortOf(*connection.client), PortOf(*connection.server));
    EnableAllRouters();
    EXPECT_EQ(connection.client->Send("", 0), 0);
    EXPECT_EQ(Sink().Take(), (Records{{PacketTrace, Sent(0, endpoints)},
                                      {VerbosePacketTrace, Sent(0, endpoints) + u", data: "}}));
}

TEST_F(Exchange, ReceiveTakesNoMoreThanThereIsRoomFor) {
    const Connection connection = Connected();
    SendAll(*connection.client, "abcdef");
    EXPECT_EQ(ReceiveExactly(*connection.server, 6), "abcdef");
    SendAll(*connection.client, "ghijkl");
    EXPECT_EQ(ReceiveSome(*connection.server, 1), "g");
    EXPECT_EQ(ReceiveExactly(*connection.server, 5), "hijkl");
}

TEST_F(Exchange, AListenerOnAllAddressesIsWhatItsConnectionsRecord) {
    const SocketPtr listener = ListeningOn(AnyAddress(), 0);
    const unsigned short port = PortOf(*listener);
    EnableOnly({ConnectionTrace});
    const Connection connection = ConnectedThrough(*listener);
    const unsigned short clientPort = PortOf(*connection.client);
    EXPECT_EQ(Sink().Take(),
              (Records{{ConnectionTrace, u"Connected, " + EndpointsOf(clientPort, port)},
                       {ConnectionTrace,
                        u"Connected, " + Endpoints("0.0.0.0", port, "127.0.0.1", clientPort)}}));
    EXPECT_EQ(connection.server->GetLocalAddress().GetOctets(), LocalHost());
    ExpectExchange(*connection.client, *connection.server);
}

TEST_F(Exchange, AcceptTellsWhoConnected) {
    const SocketPtr listener = Listening();
    const SocketPtr client = ConnectedTo(*listener);
    VelNet::SocketAddress remote;
    const SocketPtr server = listener->Accept(remote);
    EXPECT_EQ(remote.GetOctets(), LocalHost());
    EXPECT_EQ(remote.GetPort(), PortOf(*client));
    EXPECT_EQ(server->GetRemoteAddress().GetPort(), PortOf(*client));
    EXPECT_EQ(client->GetRemoteAddress().GetPort(), PortOf(*listener));
    EXPECT_EQ(client->GetRemoteAddress().GetOctets(), LocalHost());
}

}  // namespace
}  // namespace Loopback
