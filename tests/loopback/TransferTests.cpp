// Much data, and both directions at once.
#include <VelLog/LogControl.h>
#include <loopback/LoopbackTest.h>

#include <algorithm>
#include <atomic>
#include <future>
#include <memory>
#include <vector>

namespace Loopback {
namespace {

class Transfer : public LoopbackTest {};

// A text without period, the same for every sender that starts it again, and what became of it.
class Stream {
public:
    std::string Next(std::size_t count) {
        std::string bytes(count, '\0');
        for (char& byte : bytes) {
            state_ ^= state_ << 13;
            state_ ^= state_ >> 7;
            state_ ^= state_ << 17;
            byte = static_cast<char>(state_ & 0xFF);
        }
        return bytes;
    }

private:
    unsigned long long state_ = 0x9E3779B97F4A7C15;
};

class Checksum {
public:
    void Add(std::string_view bytes) {
        for (const char byte : bytes) {
            value_ = (value_ ^ static_cast<unsigned char>(byte)) * 0x100000001B3;
        }
        count_ += bytes.size();
    }
    bool operator==(const Checksum&) const = default;

private:
    unsigned long long value_ = 0xCBF29CE484222325;
    std::size_t count_ = 0;
};

constexpr std::size_t LargeSize = 64U << 20U;

// In pieces of many lengths, a single byte among them.
Checksum SendStream(VelNet::Socket& socket, std::size_t size) {
    Stream stream;
    Checksum checksum;
    for (std::size_t piece = 1; size > 0; piece = piece * 3 % 262139) {
        const std::string bytes = stream.Next(std::min(piece, size));
        SendAll(socket, bytes);
        checksum.Add(bytes);
        size -= bytes.size();
    }
    return checksum;
}

Checksum ReceiveStream(VelNet::Socket& socket, std::size_t size) {
    Checksum checksum;
    for (std::size_t room = 1; size > 0; room = room * 5 % 262139) {
        const std::string bytes = ReceiveSome(socket, static_cast<int>(std::min(room, size)));
        checksum.Add(bytes);
        size -= bytes.size();
    }
    return checksum;
}

TEST_F(Transfer, SixtyFourMebibytesArriveAsTheyWereSent) {
    const Connection connection = Connected();
    auto sender = std::async(std::launch::async, [&connection] {
        const Checksum sent = SendStream(*connection.client, LargeSize);
        connection.client->Close();
        return sent;
    });
    const Checksum received = ReceiveStream(*connection.server, LargeSize);
    EXPECT_EQ(FailureOfReceive(*connection.server), ConnectionClosed());
    EXPECT_TRUE(received == sender.get());
}

// Sends that many numbered messages, each by one call, and returns their records.
Records SendMessages(VelNet::Socket& socket, int count, const std::u16string& endpoints) {
    Records records;
    for (int number = 0; number < count; ++number) {
        const std::string message = std::to_string(1000 + number);
        SendAll(socket, message);
        std::u16string text = u"Sent 4 bytes, " + endpoints;
        records.push_back({PacketTrace, text});
        text += u", data: ";
        for (const char digit : message) {
            text.append(u"3").append(1, static_cast<char16_t>(digit));
        }
        records.push_back({VerbosePacketTrace, text});
    }
    return records;
}

// Receives all of the messages and returns the records of the calls that it took.
Records ReceiveMessages(VelNet::Socket& socket, int count, const std::u16string& endpoints) {
    Records records;
    std::string expected;
    for (int number = 0; number < count; ++number) {
        expected += std::to_string(1000 + number);
    }
    for (std::size_t done = 0; done < expected.size();) {
        const std::string bytes = ReceiveSome(socket, 64);
        EXPECT_EQ(bytes, expected.substr(done, bytes.size()));
        done += bytes.size();
        std::u16string text =
            u"Received " + Widen(std::to_string(bytes.size())) + u" bytes, " + endpoints;
        records.push_back({PacketTrace, text});
        text += u", data: ";
        for (const char digit : bytes) {
            text.append(u"3").append(1, static_cast<char16_t>(digit));
        }
        records.push_back({VerbosePacketTrace, text});
    }
    return records;
}

struct WrittenRecords {
    std::thread::id thread;
    Records expected;
};

template <class Work>
std::future<WrittenRecords> InThread(Work work) {
    return std::async(std::launch::async, [work] {
        return WrittenRecords{std::this_thread::get_id(), work()};
    });
}

TEST_F(Transfer, OneThreadSendsWhileAnotherReceivesAndEveryRecordIsWhole) {
    constexpr int Count = 500;
    const Connection connection = Connected();
    VelNet::Socket& client = *connection.client;
    VelNet::Socket& server = *connection.server;
    const std::u16string ofClient = EndpointsOf(PortOf(client), PortOf(server));
    const std::u16string ofServer = EndpointsOf(PortOf(server), PortOf(client));
    EnableAllRouters();

    std::vector<std::future<WrittenRecords>> threads;
    threads.push_back(InThread([&] { return SendMessages(client, Count, ofClient); }));
    threads.push_back(InThread([&] { return ReceiveMessages(client, Count, ofClient); }));
    threads.push_back(InThread([&] { return SendMessages(server, Count, ofServer); }));
    threads.push_back(InThread([&] { return ReceiveMessages(server, Count, ofServer); }));
    std::vector<WrittenRecords> written;
    for (auto& thread : threads) {
        written.push_back(thread.get());
    }

    std::size_t total = 0;
    for (const WrittenRecords& records : written) {
        EXPECT_EQ(Sink().WrittenBy(records.thread), records.expected);
        total += records.expected.size();
    }
    EXPECT_EQ(Sink().Take().size(), total);
}

// Sends until told to stop, then closes.
Checksum SendUntil(const std::atomic<bool>& stop, VelNet::Socket& socket) {
    Stream stream;
    Checksum checksum;
    while (!stop) {
        const std::string bytes = stream.Next(64);
        SendAll(socket, bytes);
        checksum.Add(bytes);
    }
    socket.Close();
    return checksum;
}

Checksum ReceiveUntilClosed(VelNet::Socket& socket) {
    Checksum checksum;
    const Failure end = FailureOf([&] {
        for (;;) {
            checksum.Add(ReceiveSome(socket));
        }
    });
    EXPECT_EQ(end, ConnectionClosed());
    return checksum;
}

bool IsWhole(const Record& record, const std::u16string& sender, const std::u16string& receiver) {
    const bool isSent = record.text.starts_with(u"Sent 64 bytes, Local");
    const bool isReceived = record.text.starts_with(u"Received ");
    return record.category == PacketTrace && ((isSent && record.text.ends_with(sender)) ||
                                              (isReceived && record.text.ends_with(receiver)));
}

// One sink's turn. It ends with its turn: from then on nobody may use it.
Records RecordsOfOneTurn(bool routerOn) {
    auto sink = std::make_unique<RecordingSink>();
    VelLog::SetSink(sink.get());
    EXPECT_TRUE(VelLog::SetRouterEnabled("Network", PacketTrace, routerOn));
    std::this_thread::yield();
    EXPECT_EQ(VelLog::SetSink(nullptr), sink.get());
    return sink->Take();
}

TEST_F(Transfer, SinksAndRoutersChangeWhileThreadsTransfer) {
    const Connection connection = Connected();
    VelNet::Socket& client = *connection.client;
    VelNet::Socket& server = *connection.server;
    const std::u16string ofClient = u" bytes, " + EndpointsOf(PortOf(client), PortOf(server));
    const std::u16string ofServer = u" bytes, " + EndpointsOf(PortOf(server), PortOf(client));
    std::atomic<bool> stop = false;
    auto sender = std::async(std::launch::async, [&] { return SendUntil(stop, client); });
    auto receiver = std::async(std::launch::async, [&] { return ReceiveUntilClosed(server); });

    std::size_t seen = 0;
    int turn = 0;
    EXPECT_TRUE(Eventually([&] {
        for (const Record& record : RecordsOfOneTurn(++turn % 4 != 0)) {
            EXPECT_TRUE(IsWhole(record, ofClient, ofServer)) << testing::PrintToString(record);
            ++seen;
        }
        return seen >= 100 && turn >= 100;
    }));
    stop = true;
    EXPECT_TRUE(receiver.get() == sender.get());
}

}  // namespace
}  // namespace Loopback
