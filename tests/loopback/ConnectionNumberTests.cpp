// The number in each record that tells one socket's records from all others.
#include <VelLog/LogControl.h>
#include <VelNet/SocketAddress.h>
#include <loopback/ExtendedTest.h>
#include <support/Text.h>

#include <algorithm>
#include <functional>
#include <vector>

namespace Loopback {
namespace {

using Number = unsigned long long;

struct NumberedRecord {
    std::u16string text;
    Number connection;
};

class NumberSink : public VelLog::LogSink {
public:
    NumberSink() { VelLog::SetSink(this); }
    ~NumberSink() override { VelLog::SetSink(nullptr); }

    void Write(const VelLog::LogRecord& record) override {
        records_.push_back({Support::Text(record.text), record.connection});
    }

    std::vector<NumberedRecord> Take() { return std::exchange(records_, {}); }
    std::vector<Number> TakeNumbers() {
        std::vector<Number> numbers;
        for (const NumberedRecord& record : Take())
            numbers.push_back(record.connection);
        return numbers;
    }

private:
    std::vector<NumberedRecord> records_;
};

class ConnectionNumber : public LoopbackTest {
protected:
    ConnectionNumber() { EnableAllRouters(); }

    NumberSink sink_;
};

// The numbers of all records that the action writes are the one given, and there are some.
void ExpectOnly(Number number, NumberSink& sink, const std::function<void()>& action) {
    sink.Take();
    action();
    const std::vector<Number> numbers = sink.TakeNumbers();
    EXPECT_FALSE(numbers.empty());
    EXPECT_EQ(numbers, std::vector<Number>(numbers.size(), number));
}

// Of the first record that the action writes; 0 if it writes none.
Number NumberOf(NumberSink& sink, const std::function<void()>& action) {
    sink.Take();
    action();
    const std::vector<Number> numbers = sink.TakeNumbers();
    return numbers.empty() ? 0 : numbers.front();
}

TEST_F(ConnectionNumber, AllRecordsOfASocketHaveTheSameOne) {
    const SocketPtr listener = Listening();
    const SocketPtr client = StreamSocket();
    const Number ofClient =
        NumberOf(sink_, [&] { client->Connect(LocalHost(), PortOf(*listener)); });
    SocketPtr server;
    const Number ofServer = NumberOf(sink_, [&] { server = Accepted(*listener); });
    EXPECT_NE(ofClient, 0U);
    EXPECT_NE(ofServer, 0U);
    EXPECT_NE(ofClient, ofServer);
    ExpectOnly(ofClient, sink_, [&] { SendAll(*client, "A"); });
    ExpectOnly(ofServer, sink_, [&] { ReceiveSome(*server); });
    ExpectOnly(ofClient, sink_, [&] { client->Close(); });
    ExpectOnly(ofServer, sink_, [&] { FailureOfReceive(*server); });
    ExpectOnly(ofServer, sink_, [&] { server->Close(); });
}

// An accepted extended socket knows no addresses, so these records differ in nothing else.
TEST_F(ConnectionNumber, RecordsWithTheSameTextAreToldApart) {
    if (const std::string lacking = Lacking(Ipv4); !lacking.empty()) GTEST_SKIP() << lacking;
    const XtPtr listener = ListeningXt(Ipv4);
    const XtConnection one = ConnectedThrough(*listener);
    const XtConnection other = ConnectedThrough(*listener);
    sink_.Take();
    SendAll(*one.server, "A");
    SendAll(*other.server, "A");
    const std::vector<NumberedRecord> records = sink_.Take();
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].text, records[2].text);
    EXPECT_EQ(records[0].connection, records[1].connection);
    EXPECT_EQ(records[2].connection, records[3].connection);
    EXPECT_NE(records[0].connection, records[2].connection);
}

TEST_F(ConnectionNumber, AnAcceptedExtendedSocketHasThatOfItsFirstRecord) {
    if (const std::string lacking = Lacking(Ipv4); !lacking.empty()) GTEST_SKIP() << lacking;
    const XtPtr listener = ListeningXt(Ipv4);
    const XtPtr client = StreamXt(Ipv4);
    client->Connect(LoopbackOf(Ipv4), PortOf(*listener).c_str());
    AcceptedXt accepted;
    const Number number = NumberOf(sink_, [&] { accepted = Accept(*listener); });
    EXPECT_NE(number, 0U);
    ExpectOnly(number, sink_, [&] { SendAll(*accepted.socket, "A"); });
    ExpectOnly(number, sink_, [&] { accepted.socket->Close(); });
    EXPECT_NE(NumberOf(sink_, [&] { listener->Close(); }), number);
}

TEST_F(ConnectionNumber, ARecordOfNoSocketHasNone) {
    sink_.Take();
    FailureOf([] { VelNet::SocketAddress::ConvertDottedStringToOctets("x"); });
    EXPECT_EQ(sink_.TakeNumbers(), std::vector<Number>{0});
}

TEST_F(ConnectionNumber, ARecordOfNoSocketBehindOneOfASocketHasNone) {
    const Connection connection = Connected();
    SendAll(*connection.client, "A");
    sink_.Take();
    FailureOf([] { VelNet::SocketAddress::ConvertDottedStringToOctets("x"); });
    EXPECT_EQ(sink_.TakeNumbers(), std::vector<Number>{0});
}

TEST_F(ConnectionNumber, SocketsWithoutRecordsUseUpNone) {
    const Number first = NumberOf(sink_, [] { StreamSocket()->Close(); });
    EnableOnly({});
    for (int round = 0; round < 5; ++round)
        Connected().client->Close();
    EnableAllRouters();
    EXPECT_EQ(NumberOf(sink_, [] { StreamSocket()->Close(); }), first + 1);
}

TEST_F(ConnectionNumber, EachFailureOfAClassicSocketHasIt) {
    const SocketPtr socket = StreamSocket();
    const Number number = NumberOf(sink_, [&] { socket->Close(); });
    char byte = 0;
    VelNet::SocketAddress remote;
    const std::function<void()> failures[] = {
        [&] { socket->Bind(LocalHost(), 0); },    [&] { socket->Listen(); },
        [&] { socket->Connect(LocalHost(), 1); }, [&] { socket->Accept(remote); },
        [&] { socket->SetReceiveTimeout(1); },    [&] { socket->SetSendTimeout(1); },
        [&] { socket->SetReuseAddress(); },       [&] { socket->Close(); },
        [&] { socket->Send(&byte, 1); },          [&] { socket->Receive(&byte, 1); },
        [&] { socket->GetLocalAddress(); },       [&] { socket->GetRemoteAddress(); },
    };
    for (const auto& failure : failures)
        ExpectOnly(number, sink_, [&] { FailureOf(failure); });
}

TEST_F(ConnectionNumber, EachFailureOfAnExtendedSocketHasIt) {
    const XtPtr socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP, Ipv4);
    const Number number = NumberOf(sink_, [&] { socket->Close(); });
    char byte = 0;
    XtPtr accepted;
    ReturnString host;
    ReturnString port;
    const std::function<void()> failures[] = {
        [&] { socket->Bind("127.0.0.1", "0"); },
        [&] { socket->Bind("not.a.host.invalid", "0"); },
        [&] { socket->Listen(); },
        [&] { socket->Connect("127.0.0.1", "1"); },
        [&] { socket->Accept(accepted, host, port); },
        [&] { socket->SetReceiveTimeout(1); },
        [&] { socket->SetSendTimeout(1); },
        [&] { socket->SetReuseAddress(); },
        [&] { socket->SetSocketForBroadcast(); },
        [&] { socket->SetSocketForMulticast("224.0.0.251", 0); },
        [&] { socket->Close(); },
        [&] { socket->Send(&byte, 1); },
        [&] { socket->Receive(&byte, 1); },
        [&] { socket->SendTo(&byte, 1, "127.0.0.1", "1"); },
        [&] { socket->RecvFrom(&byte, 1, host, port); },
    };
    for (const auto& failure : failures)
        ExpectOnly(number, sink_, [&] { FailureOf(failure); });
}

}  // namespace
}  // namespace Loopback
