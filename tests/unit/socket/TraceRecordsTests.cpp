#include <Socket/TraceRecords.h>

#include <algorithm>
#include <new>

#include "SocketFixture.h"

namespace SocketTests {
namespace {

class TraceRecords : public SocketTest {};
class TraceRecordsClassic : public SocketTest {};

constexpr Routers NoRouter = {};
constexpr Routers AllButPackets = {.error = true, .connection = true};
constexpr Routers PacketOnly = {.packet = true};
constexpr Routers VerboseOnly = {.verbose = true};
constexpr Routers BothPackets = {.packet = true, .verbose = true};

// Feeds addresses and ports as texts and counts how often it is asked to.
class TextEndpoints final : public TraceEndpoints {
public:
    TextEndpoints() noexcept : TraceEndpoints(0) {}

    void FeedTo(VelResource::MessageFormatter& formatter) const override {
        ++feeds;
        formatter.AddNarrowText("::1").AddNarrowText("4711");
        formatter.AddNarrowText("fe80::1").AddNarrowText("53");
    }

    mutable int feeds = 0;
};

std::vector<LoggedArgument> TextEndpointArguments() {
    return {NarrowArgument("::1"), NarrowArgument("4711"), NarrowArgument("fe80::1"),
            NarrowArgument("53")};
}

// One kind of transfer with its formats as the log knows them.
struct Transfer {
    TransferFormats formats;
    const char* plain;
    const char* withData;
};

const Transfer Transfers[] = {
    {SentFormats, "Sent %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)",
     "Sent %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"},
    {ReceivedFormats, "Received %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)",
     "Received %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"},
    {SendtoFormats, "Sendto %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)",
     "Sendto %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"},
    {RecvfromFormats, "Recvfrom %1 bytes, Local address: %2 (%3), Remote address: %4 (%5)",
     "Recvfrom %1 bytes, Local address: %2 (%3), Remote address: %4 (%5), data: %6"},
};

std::vector<LoggedArgument> Concatenate(std::vector<LoggedArgument> first,
                                        const std::vector<LoggedArgument>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Record PlainRecord(const char* format, int count, const std::vector<LoggedArgument>& endpoints) {
    return {PacketCategory, format, Concatenate({IntegerArgument(count)}, endpoints)};
}

Record RecordWithData(const char* format, int count, const std::vector<LoggedArgument>& endpoints,
                      const std::string& data) {
    return {VerboseCategory, format,
            Concatenate(Concatenate({IntegerArgument(count)}, endpoints), {NarrowArgument(data)})};
}

TEST_F(TraceRecords, OfBothPacketRoutersComePlainFirst) {
    std::vector<Record> expected;
    for (const Transfer& transfer : Transfers) {
        WriteTransferRecords(transfer.formats, "A\r\xFF", 3, TextEndpoints());
        expected.push_back(PlainRecord(transfer.plain, 3, TextEndpointArguments()));
        expected.push_back(
            RecordWithData(transfer.withData, 3, TextEndpointArguments(), "410DFFFFFFFF"));
    }
    ExpectRecords(expected);
    EXPECT_EQ(FormatterRequests(), 8);
}

TEST_F(TraceRecords, OfPacketTraceAloneShowNoData) {
    Switch(PacketOnly);
    std::vector<Record> expected;
    for (const Transfer& transfer : Transfers) {
        WriteTransferRecords(transfer.formats, "abc", 3, TextEndpoints());
        expected.push_back(PlainRecord(transfer.plain, 3, TextEndpointArguments()));
    }
    ExpectRecords(expected);
    EXPECT_EQ(FormatterRequests(), 4);
}

TEST_F(TraceRecords, OfVerbosePacketTraceAloneShowTheData) {
    Switch(VerboseOnly);
    std::vector<Record> expected;
    for (const Transfer& transfer : Transfers) {
        WriteTransferRecords(transfer.formats, "abc", 3, TextEndpoints());
        expected.push_back(RecordWithData(transfer.withData, 3, TextEndpointArguments(), "616263"));
    }
    ExpectRecords(expected);
    EXPECT_EQ(FormatterRequests(), 4);
}

TEST_F(TraceRecords, OfOtherRoutersAreNotWritten) {
    for (const Routers& routers : {NoRouter, AllButPackets}) {
        Switch(routers);
        const TextEndpoints endpoints;
        const Allocations::Mark mark;
        for (const Transfer& transfer : Transfers)
            WriteTransferRecords(transfer.formats, "abc", 3, endpoints);
        EXPECT_EQ(mark.Requests(), 0U);
        EXPECT_EQ(endpoints.feeds, 0);
    }
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(TraceRecords, AskTheEndpointsOnceEach) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        const TextEndpoints endpoints;
        WriteTransferRecords(SendtoFormats, "abc", 3, endpoints);
        EXPECT_EQ(endpoints.feeds, int{routers.packet} + int{routers.verbose});
    }
}

TEST_F(TraceRecords, AnyFlagByteButZeroWritesARecord) {
    for (int flag = 0; flag < 256; ++flag) {
        SetRouterFlag(PacketCategory, static_cast<unsigned char>(flag));
        SetRouterFlag(VerboseCategory, static_cast<unsigned char>(flag));
        ClearTranscript();
        WriteTransferRecords(SentFormats, "abc", 3, TextEndpoints());
        EXPECT_EQ(CountOf("LogMessage"), flag == 0 ? 0 : 2) << flag;
    }
}

TEST_F(TraceRecords, OfDatagramsRead) {
    WriteTransferRecords(SendtoFormats, "A\r\n", 3, TextEndpoints());
    WriteTransferRecords(RecvfromFormats, "\xC3", 1, TextEndpoints());
    const std::string sent =
        "Sendto 3 bytes, Local address: ::1 (4711), Remote address: fe80::1 (53)";
    const std::string received =
        "Recvfrom 1 bytes, Local address: ::1 (4711), Remote address: fe80::1 (53)";
    EXPECT_EQ(Transcript(),
              (Lines{"LogMessage(Packet Trace, \"" + sent + "\")",
                     "LogMessage(Verbose Packet Trace, \"" + sent + ", data: 410D0A\")",
                     "LogMessage(Packet Trace, \"" + received + "\")",
                     "LogMessage(Verbose Packet Trace, \"" + received + ", data: FFFFFFC3\")"}));
}

TEST_F(TraceRecords, ShowExactlyTheCountedBytes) {
    Switch(VerboseOnly);
    WriteTransferRecords(ReceivedFormats, "abcdef", 2, TextEndpoints());
    ExpectRecords({RecordWithData(Transfers[1].withData, 2, TextEndpointArguments(), "6162")});
}

TEST_F(TraceRecords, OfNoBytesHaveEmptyData) {
    WriteTransferRecords(SentFormats, "abc", 0, TextEndpoints());
    ExpectRecords({PlainRecord(Transfers[0].plain, 0, TextEndpointArguments()),
                   RecordWithData(Transfers[0].withData, 0, TextEndpointArguments(), "")});
}

TEST_F(TraceRecords, ShowAMebibyteWhole) {
    Switch(VerboseOnly);
    constexpr int Mebibyte = 1 << 20;
    const std::string data(Mebibyte, 'z');
    WriteTransferRecords(SentFormats, data.data(), Mebibyte, TextEndpoints());
    const std::vector<LoggedMessage> messages = LoggedMessages(VerboseCategory);
    ASSERT_EQ(messages.size(), 1U);
    ASSERT_EQ(messages[0].arguments.size(), 6U);
    EXPECT_EQ(messages[0].arguments[0], IntegerArgument(Mebibyte));
    std::string digits;
    for (int byte = 0; byte < Mebibyte; ++byte)
        digits += "7A";
    EXPECT_TRUE(messages[0].arguments[5] == NarrowArgument(digits));
}

TEST_F(TraceRecords, NeedNoLayer) {
    BringLayerDown();
    ClearTranscript();
    WriteTransferRecords(SentFormats, "abc", 3, TextEndpoints());
    EXPECT_EQ(Transcript(), Lines());
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(TraceRecords, LeakNothingWhenTheDataHaveNoMemory) {
    const std::string data(64, 'a');
    const std::size_t failures = FailEveryAllocation([&](std::size_t n) {
        const Starved starved =
            Starve(n, [&] { WriteTransferRecords(SentFormats, data.data(), 64, TextEndpoints()); });
        EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
        return starved.happened;
    });
    EXPECT_EQ(failures, 2U);
}

TEST_F(TraceRecords, OfConnectionsGoWhereTheyAreSent) {
    VelLog::Router& router = *g_socketLayer->connectionTraceRouter;
    const TextEndpoints endpoints;
    WriteConnectionRecord(router, ConnectedFormat, endpoints);
    WriteConnectionRecord(router, DisconnectedFormat, endpoints);
    ExpectRecords(
        {{ConnectionCategory, "Connected, Local address: %1 (%2), Remote address: %3 (%4)",
          TextEndpointArguments()},
         {ConnectionCategory, "Disconnected, Local address: %1 (%2), Remote address: %3 (%4)",
          TextEndpointArguments()}});
    EXPECT_EQ(FormatterRequests(), 2);
    EXPECT_EQ(endpoints.feeds, 2);
}

// The log may be switched off after the operation has asked for it.
TEST_F(TraceRecords, OfConnectionsAskForNoEndpointsWithoutTheirRouter) {
    int questions = 0;
    const auto makeEndpoints = [&questions] {
        ++questions;
        return TextEndpoints();
    };
    Switch({.error = true, .packet = true, .verbose = true});
    TryWriteConnectionRecord(ConnectedFormat, makeEndpoints);
    EXPECT_EQ(questions, 0);
    Switch({.connection = true});
    TryWriteConnectionRecord(ConnectedFormat, makeEndpoints);
    EXPECT_EQ(questions, 1);
    EXPECT_EQ(FormatterRequests(), 1);
}

// What they report has succeeded already.
TEST_F(TraceRecords, AreLostWithoutMemoryAndNothingElseIs) {
    const auto noMemory = []() -> TextEndpoints { throw std::bad_alloc(); };
    Switch({.connection = true, .packet = true});
    TryWriteConnectionRecord(ConnectedFormat, noMemory);
    EXPECT_EQ(TryWriteTransferRecords(SentFormats, "abc", 3, noMemory), 3);
    ExpectRecords({});
}

TEST_F(TraceRecords, FormatsAreQuotedAsTheyStand) {
    for (const LogFormat& format :
         {ConnectedFormat, DisconnectedFormat, SentFormats.plain, SentFormats.withData,
          ReceivedFormats.plain, ReceivedFormats.withData, SendtoFormats.plain,
          SendtoFormats.withData, RecvfromFormats.plain, RecvfromFormats.withData}) {
        EXPECT_EQ(format.quoted, '"' + std::string(format.text) + '"');
    }
}

std::vector<LoggedArgument> StoredEndpoints() {
    return EndpointArguments(LocalHost, LocalPort, RemoteHost, RemotePort);
}

TEST_F(TraceRecordsClassic, OfASendReads) {
    const auto socket = MakeConnectedSocket();
    socket->Send("A\r\n", 3);
    const std::string line =
        "Sent 3 bytes, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)";
    EXPECT_EQ(TranscriptWithout({"send"}),
              (Lines{"LogMessage(Packet Trace, \"" + line + "\")",
                     "LogMessage(Verbose Packet Trace, \"" + line + ", data: 410D0A\")"}));
}

TEST_F(TraceRecordsClassic, FeedsAddressesAsTextsAndPortsAsNumbers) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("\x7F\xC3");
    char buffer[16] = {};
    socket->Send("abc", 3);
    socket->Receive(buffer, sizeof buffer);
    ExpectRecords({PlainRecord(Transfers[0].plain, 3, StoredEndpoints()),
                   RecordWithData(Transfers[0].withData, 3, StoredEndpoints(), "616263"),
                   PlainRecord(Transfers[1].plain, 2, StoredEndpoints()),
                   RecordWithData(Transfers[1].withData, 2, StoredEndpoints(), "7FFFFFFFC3")});
}

TEST_F(TraceRecordsClassic, OfAConnectionReads) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns(LocalHost, LocalPort);
    On::Getpeername().Returns(RemoteHost, RemotePort);
    socket->Connect(OctetsOf(RemoteHost), RemotePort);
    EXPECT_EQ(LoggedTexts(ConnectionCategory),
              (std::vector<std::u16string>{u"Connected, Local address: 10.1.2.3 (50123), Remote "
                                           u"address: 10.1.2.9 (80)"}));
    ExpectRecords(
        {{ConnectionCategory, "Connected, Local address: %1 (%2), Remote address: %3 (%4)",
          StoredEndpoints()}});
}

TEST_F(TraceRecordsClassic, UsesTheStoredAddressesWithoutAskingTheSystem) {
    const auto socket = MakeConnectedSocket();
    On::Recv().Delivers("a");
    char buffer[1];
    socket->Send("a", 1);
    socket->Receive(buffer, 1);
    EXPECT_EQ(CountOf("getsockname") + CountOf("getpeername"), 0);
    EXPECT_EQ(CountOf("LogMessage"), 4);
}

TEST_F(TraceRecordsClassic, ShowsHighestPortsAndOctets) {
    const auto socket = MakeSocket();
    On::Getsockname().Returns("255.255.255.255", 65535);
    On::Getpeername().Returns("0.0.0.0", 32768);
    socket->Connect(Octets(), 0);
    ExpectRecords(
        {{ConnectionCategory, "Connected, Local address: %1 (%2), Remote address: %3 (%4)",
          EndpointArguments("255.255.255.255", 65535, "0.0.0.0", 32768)}});
}

TEST_F(TraceRecordsClassic, IsWrittenByTheRoutersThatAreOn) {
    const auto socket = MakeConnectedSocket();
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        On::Recv().Delivers("xyz");
        char buffer[3];
        socket->Send("abc", 3);
        socket->Receive(buffer, 3);
        const int records = 2 * (int{routers.packet} + int{routers.verbose});
        EXPECT_EQ(CountOf("LogMessage"), records);
        EXPECT_EQ(FormatterRequests() - requestsBefore, records);
    }
}

TEST_F(TraceRecordsClassic, SwitchedOffNeedsNeitherMemoryNorFormatter) {
    const auto socket = MakeConnectedSocket();
    for (const Routers& routers : {NoRouter, AllButPackets}) {
        Switch(routers);
        On::Recv().Delivers("xyz");
        char buffer[3];
        const Allocations::Mark mark;
        socket->Send("abc", 3);
        socket->Receive(buffer, 3);
        EXPECT_EQ(mark.Requests(), 0U);
    }
    EXPECT_EQ(FormatterRequests(), 0);
    ExpectRecords({});
}

// The requests for the four bytes of an address that a send makes: one a copy.
std::ptrdiff_t AddressCopies(SocketImpl& socket, const Routers& routers) {
    Switch(routers);
    const Allocations::Mark mark;
    socket.Send("a", 1);
    const std::vector<std::size_t> sizes = mark.Sizes();
    return std::count(sizes.begin(), sizes.end(), 4U);
}

TEST_F(TraceRecordsClassic, CopiesNoAddressOnTheHeap) {
    const auto socket = MakeConnectedSocket();
    for (const Routers& routers : {PacketOnly, VerboseOnly, BothPackets, AllButPackets})
        EXPECT_EQ(AddressCopies(*socket, routers), 0);
}

TEST_F(TraceRecordsClassic, OfASendOfNothingShowsNothing) {
    const auto socket = MakeConnectedSocket();
    socket->Send("abc", 0);
    ExpectRecords({PlainRecord(Transfers[0].plain, 0, StoredEndpoints()),
                   RecordWithData(Transfers[0].withData, 0, StoredEndpoints(), "")});
}

TEST_F(TraceRecordsClassic, OfAShortSendShowsWhatWasTaken) {
    const auto socket = MakeConnectedSocket();
    On::Send().Returns(2);
    socket->Send("abcdef", 6);
    ExpectRecords({PlainRecord(Transfers[0].plain, 2, StoredEndpoints()),
                   RecordWithData(Transfers[0].withData, 2, StoredEndpoints(), "6162")});
}

TEST_F(TraceRecordsClassic, IsNotWrittenOfWhatFailed) {
    const auto socket = MakeConnectedSocket();
    On::Send().Fails(10035).Fails(10054);
    On::Recv().Fails(10035).Returns(0);
    char buffer[4];
    Catch([&] { socket->Send("abc", 3); });
    Catch([&] { socket->Send("abc", 3); });
    Catch([&] { socket->Receive(buffer, 4); });
    Catch([&] { socket->Receive(buffer, 4); });
    EXPECT_EQ(LoggedMessages(PacketCategory).size(), 0U);
    EXPECT_EQ(LoggedMessages(VerboseCategory).size(), 0U);
    EXPECT_EQ(LoggedMessages(ErrorCategory).size(), 3U) << "all but the send that would block";
}

TEST_F(TraceRecordsClassic, NeedsNoLayer) {
    const auto socket = MakeConnectedSocket();
    BringLayerDown();
    ClearTranscript();
    On::Recv().Delivers("x").Returns(0);
    On::Send().Passes().Fails(10054);
    char buffer[1];
    EXPECT_EQ(socket->Send("abc", 3), 3);
    EXPECT_EQ(socket->Receive(buffer, 1), 1);
    EXPECT_TRUE(Catch([&] { socket->Send("abc", 3); }).thrown);
    EXPECT_TRUE(Catch([&] { socket->Receive(buffer, 1); }).thrown);
    Catch([&] { socket->Connect(Octets(), 1); });
    EXPECT_EQ(CountOf("LogMessage"), 0);
    EXPECT_EQ(FormatterRequests(), 0);
}

}  // namespace
}  // namespace SocketTests
