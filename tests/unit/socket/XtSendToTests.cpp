// SocketXt::SendTo by host and port.
#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtSendTo : public XtTest {};

constexpr char Function[] = "VelNet::SocketXtImpl::SendTo";
constexpr char Description[] = "cannot sendto using connectionless socket";

const XtFailure NotResolved{Function, Description, "::getaddrinfo", "host", "80"};
const XtFailure NotSent{Function, Description, "::sendto", "host", "80"};

Lines CallsAround(const Lines& attempts, const Lines& end) {
    Lines calls = {"WSAStartup(0x0101)", "getaddrinfo(\"host\", \"80\", {0, 0, 2, 17})"};
    calls.insert(calls.end(), attempts.begin(), attempts.end());
    calls.insert(calls.end(), end.begin(), end.end());
    return calls;
}

Record PlainRecord(int count) {
    return XtTransferRecord("Sendto", count, ThisMachine, "Random Port", "host", "80");
}

Record RecordWithData(int count, const std::string& data) {
    return XtTransferRecordWithData("Sendto", count, ThisMachine, "Random Port", "host", "80",
                                    data);
}

TEST_F(XtSendTo, ResolvesSendsRecordsAndCleansUp) {
    const auto socket = MakeDatagramXt();
    EXPECT_EQ(socket->SendTo("abc", 3, "host", "80"), 3);
    EXPECT_EQ(
        Transcript(),
        (Lines{"WSAStartup(0x0101)", "getaddrinfo(\"host\", \"80\", {0, 0, 2, 17})",
               "sendto(1001, \"abc\", 3, 0, 10.0.0.1:80, 16)", "freeaddrinfo(1)", "ComputerName()",
               "CodePageFromWide(\"SCRIPTED-HOST\", 13)",
               "LogMessage(Packet Trace, \"Sendto 3 bytes, Local address: SCRIPTED-HOST (Random "
               "Port), Remote address: host (80)\")",
               "LogMessage(Verbose Packet Trace, \"Sendto 3 bytes, Local address: SCRIPTED-HOST "
               "(Random Port), Remote address: host (80), data: 616263\")",
               "WSACleanup()"}));
    ExpectRecords({PlainRecord(3), RecordWithData(3, "616263")});
}

TEST_F(XtSendTo, HintsAreTheSocketsTypeAndProtocolAlone) {
    const auto socket = MakeXt(STATE_CREATED, 1, 6, SocketXt::FAMILY_IPV6);
    socket->SendTo("abc", 3, "host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})");
    const auto odd = MakeXt(STATE_CREATED, -5, 0);
    odd->SendTo("abc", 3, "host", "80");
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"host\", \"80\", {0, 0, -5, 0})");
}

TEST_F(XtSendTo, PassesBufferLengthAndAddressOn) {
    SwitchPacketTracing(false, false);
    const auto socket = MakeDatagramXt();
    for (const int length : {0, 1, INT_MAX, -1, INT_MIN}) {
        On::Sendto().Returns(0);
        EXPECT_EQ(socket->SendTo(nullptr, length, "host", "80"), 0);
        EXPECT_EQ(LastEventOf("sendto").text,
                  "sendto(1001, null, " + std::to_string(length) + ", 0, 10.0.0.1:80, 16)");
    }
    On::Getaddrinfo().Returns({{99, "abcde"}});
    const char buffer[] = "abc";
    socket->SendTo(buffer, 2, "host", "80");
    EXPECT_EQ(LastEventOf("sendto").text, "sendto(1001, \"ab\", 2, 0, 0x6162636465, 5)");
    EXPECT_EQ(LastEventOf("sendto").pointer, buffer);
}

TEST_F(XtSendTo, AddressesAreTriedInOrderUntilOneTakesTheDatagram) {
    SwitchPacketTracing(false, false);
    for (const AddressSequence& sequence : AllAddressSequences()) {
        const auto socket = MakeDatagramXt();
        const XtFields before = FieldsOf(*socket);
        sequence.Script(On::Sendto());
        int count = -7;
        const Caught caught = Catch([&] { count = socket->SendTo("abc", 3, "host", "80"); });
        const std::string handle = std::to_string(socket->GetHandle());
        const Lines attempts = sequence.Calls("sendto(" + handle + ", \"abc\", 3, 0, ", ")");
        if (sequence.Succeeds()) {
            EXPECT_EQ(caught, Caught());
            EXPECT_EQ(count, 3);
            EXPECT_EQ(SystemCalls(), CallsAround(attempts, {"freeaddrinfo(1)", "WSACleanup()"}));
        } else {
            EXPECT_EQ(caught, NotSent.With(sequence.LastError()));
            EXPECT_EQ(SystemCalls(), CallsAround(attempts, {"WSAGetLastError()", "freeaddrinfo(1)",
                                                            "LogMessage", "WSACleanup()"}));
        }
        EXPECT_EQ(FieldsOf(*socket), before);
        SetRouterFlag(ConnectionCategory, 0);
    }
}

TEST_F(XtSendTo, AnyCountButTheFailuresIsTheEnd) {
    for (const int count : {0, 1, 2, INT_MAX, -2, INT_MIN}) {
        SwitchPacketTracing(false, false);
        const auto socket = MakeDatagramXt();
        On::Getaddrinfo().Returns({{2, "10.0.0.1", 80}, {2, "10.0.0.2", 80}});
        On::Sendto().Returns(count);
        EXPECT_EQ(socket->SendTo("abc", 3, "host", "80"), count);
        EXPECT_EQ(CountOf("sendto"), 1);
    }
}

TEST_F(XtSendTo, HostWithoutAddressesIsAFailureToSend) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo().ReturnsEmpty();
    EXPECT_EQ(Catch([&] { socket->SendTo("abc", 3, "host", "80"); }), NotSent.With(Disturbance));
    EXPECT_EQ(CountOf("sendto"), 0);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
    ExpectRecords({NotSent.RecordWith(Disturbance)});
}

TEST_F(XtSendTo, EachFailureToResolveIsReportedWithTheLastError) {
    const auto socket = MakeDatagramXt();
    StoreTexts(*socket);
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
        .operation = [&] { socket->SendTo("abc", 3, "host", "80"); },
        .failure = NotResolved,
        .calls = CallsAround({"WSAGetLastError()"}, {}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

// Would-block too, unlike Send's.
TEST_F(XtSendTo, EachRefusalIsReportedWithTheTextsGiven) {
    const auto socket = MakeDatagramXt();
    StoreTexts(*socket);
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Sendto().Fails(number); },
        .operation = [&] { socket->SendTo("abc", 3, "host", "80"); },
        .failure = NotSent,
        .calls = CallsAround({"sendto(1001, \"abc\", 3, 0, 10.0.0.1:80, 16)"},
                             {"WSAGetLastError()", "freeaddrinfo(1)"}),
        .callsAfterwards = {"WSACleanup()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtSendTo, FailureTextsAreToldWhole) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo().Fails(11001);
    EXPECT_EQ(Catch([&] { socket->SendTo("abc", 3, "nowhere.example", "80"); }).text,
              u"VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , "
              u"::getaddrinfo , nowhere.example : 80 , errno = \u2AF9 host not found");
    On::Sendto().Fails(10040);
    const Caught caught = Catch([&] { socket->SendTo("abc", 3, "10.0.0.1", "80"); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::SendTo , cannot sendto using connectionless socket , "
              u"::sendto , 10.0.0.1 : 80 , errno = \u2738 Message too long");
    EXPECT_EQ(caught.code, 10040);
}

TEST_F(XtSendTo, WritesWhatTheRoutersAskFor) {
    const auto socket = MakeDatagramXt();
    std::vector<Record> expected;
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        On::Sendto().Returns(2);
        EXPECT_EQ(socket->SendTo("a\xFFz", 3, "host", "80"), 2);
        if (routers.packet) expected.push_back(PlainRecord(2));
        if (routers.verbose) expected.push_back(RecordWithData(2, "61FFFFFFFF"));
        ExpectRecords(expected);
        EXPECT_EQ(CountOf("LogMessage"), routers.packet + routers.verbose);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.packet + routers.verbose);
        EXPECT_EQ(CountOf("ComputerName"), routers.packet || routers.verbose ? 1 : 0);
    }
    EnableAllRouters();
}

TEST_F(XtSendTo, WithTheRoutersOffNeedsNoMemory) {
    const auto socket = MakeDatagramXt();
    Switch({.error = true, .connection = true});
    const Allocations::Mark mark;
    socket->SendTo("abc", 3, "host", "80");
    EXPECT_EQ(mark.Requests(), 0U);
    EnableAllRouters();
}

TEST_F(XtSendTo, RecordsShowNeitherTheSocketsTextsNorItsPeers) {
    const auto socket = MakeDatagramXt();
    StoreTexts(*socket);
    SwitchPacketTracing(true, false);
    socket->SendTo("abc", 3, "host", "80");
    ExpectRecords({PlainRecord(3)});
}

TEST_F(XtSendTo, MissingTextsArePassedOn) {
    const auto socket = MakeDatagramXt();
    const char* const none = nullptr;
    SwitchPacketTracing(true, false);
    EXPECT_EQ(socket->SendTo("abc", 3, none, none), 3);
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(null, null, {0, 0, 2, 17})");
    EXPECT_EQ(LoggedTexts(PacketCategory)[0],
              u"Sendto 3 bytes, Local address: SCRIPTED-HOST (Random Port), Remote address:  ()");
    On::Sendto().Fails(10051);
    EXPECT_EQ(Catch([&] { socket->SendTo("abc", 3, none, none); }),
              (XtFailure{Function, Description, "::sendto"}.With(10051)));
}

TEST_F(XtSendTo, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Sendto().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->SendTo("abc", 3, "host", "80"); }), NotSent.With(10038));
    EXPECT_EQ(LastEventOf("sendto").text, "sendto(INVALID, \"abc\", 3, 0, 10.0.0.1:80, 16)");
}

TEST_F(XtSendTo, SentDatagramIsToldSentWhateverMemoryIsMissing) {
    const auto socket = MakeDatagramXt();
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SCOPED_TRACE(n);
        ClearTranscript();
        int count = 0;
        const Starved starved = Starve(n, [&] { count = socket->SendTo("abc", 3, "host", "80"); });
        EXPECT_EQ(starved.outOfMemory, CountOf("sendto") == 0);
        EXPECT_EQ(count, starved.outOfMemory ? 0 : 3);
        EXPECT_EQ(CountOf("WSACleanup"), CountOf("WSAStartup"));
        EXPECT_EQ(CountOf("freeaddrinfo"), CountOf("getaddrinfo"));
        return starved.happened;
    });
    EXPECT_GE(failed, 3U);
}

TEST_F(XtSendTo, ExhaustedMemoryWhileTheFailureIsToldLeavesNothingOpen) {
    const auto socket = MakeDatagramXt();
    const std::size_t failed = ExhaustMemory(
        [] { On::Sendto().Fails(10054); }, [&] { socket->SendTo("abc", 3, "host", "80"); },
        [](const Starved& starved) { EXPECT_EQ(starved.outOfMemory, starved.happened); });
    EXPECT_GE(failed, 1U);
}

TEST_F(XtSendTo, LogThatFailsLosesTheRecordsAlone) {
    const auto socket = MakeDatagramXt();
    On::LogMessage().Throws(7);
    EXPECT_EQ(socket->SendTo("abc", 3, "host", "80"), 3);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtSendTo, LogThatThrowsOnAFailureLeavesNothingOpen) {
    const auto socket = MakeDatagramXt();
    On::Sendto().Fails(10054);
    On::LogMessage().Throws(7);
    EXPECT_ANY_THROW(socket->SendTo("abc", 3, "host", "80"));
    EXPECT_EQ(CountOf("freeaddrinfo"), 1);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

}  // namespace
}  // namespace SocketTests
