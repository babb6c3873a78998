// SocketXt::Close and the end of the object.
#include <stdexcept>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtClose : public XtTest {};
class XtCloseAtTheEnd : public XtTest {};

// The name of the call is another one's.
const XtFailure NotClosed{"VelNet::SocketXtImpl::Close", "cannot close a socket", "::getaddrinfo",
                          LocalText, LocalService};

XtFields ClosedAddressedFields() {
    return {Winsock::InvalidSocket,
            STATE_CLOSED,
            LocalText,
            LocalService,
            RemoteText,
            RemoteService,
            1,
            6,
            SocketXt::FAMILY_IPV4};
}

Record DisconnectedRecord() {
    return XtConnectionRecord("Disconnected", LocalText, LocalService, RemoteText, RemoteService);
}

// The overrides must not be called by the end of the object.
class Overriding : public SocketXtImpl {
public:
    using SocketXtImpl::SocketXtImpl;
    void Close() override { ++calls; }
    bool IsValid() const override {
        ++calls;
        return false;
    }

    static inline int calls = 0;
};

TEST_F(XtClose, ClosesTheHandleThenRecordsAndKeepsTheTexts) {
    const auto socket = MakeAddressedXt();
    socket->Close();
    EXPECT_EQ(Transcript(),
              (Lines{"closesocket(1001)",
                     "LogMessage(Connection Trace, \"Disconnected, Local address: here.example "
                     "(4000), Remote address: there.example (http)\")"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedAddressedFields());
    EXPECT_FALSE(socket->IsValid());
    ExpectRecords({DisconnectedRecord()});
}

TEST_F(XtClose, RecordIsWrittenOnceTheSocketIsClosed) {
    const auto socket = MakeAddressedXt();
    XtFields atRecord{};
    Observe("LogMessage", [&](const Event&) { atRecord = FieldsOf(*socket); });
    socket->Close();
    EXPECT_EQ(atRecord, ClosedAddressedFields());
}

TEST_F(XtClose, AsksTheSystemInEveryState) {
    for (const SocketState state :
         {STATE_CLOSED, STATE_CREATED, STATE_BOUND, STATE_LISTENING, STATE_CONNECTED}) {
        const auto socket = MakeXt(state);
        socket->Close();
        EXPECT_EQ(CountOf("closesocket"), 1) << state;
        EXPECT_EQ(CountOf("LogMessage"), 1) << state;
        EXPECT_EQ(FieldsOf(*socket), FieldsOf(*MakeClosedXt())) << state;
    }
}

TEST_F(XtClose, NeverConnectedSocketIsRecordedWithEmptyTexts) {
    const auto socket = MakeXt();
    socket->Close();
    ExpectRecords({XtConnectionRecord("Disconnected", "", "", "", "")});
    EXPECT_EQ(LoggedTexts(ConnectionCategory)[0],
              u"Disconnected, Local address:  (), Remote address:  ()");
}

// Unlike the classic socket's.
TEST_F(XtClose, EachFailureIsReportedAndKeepsTheHandle) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Closesocket().Fails(number); },
        .operation = [&] { socket->Close(); },
        .failure = NotClosed,
        .calls = {"closesocket(1001)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
    EXPECT_EQ(FieldsOf(*socket).handle, 1001U);
}

TEST_F(XtClose, FailureIsNotRecordedAsDisconnected) {
    const auto socket = MakeAddressedXt();
    On::Closesocket().Fails(10035).Returns(0);
    const Caught caught = Catch([&] { socket->Close(); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketXtImpl::Close , cannot close a socket , ::getaddrinfo , "
              u"here.example : 4000 , errno = \u2733 Resource temporarily unavailable");
    EXPECT_EQ(caught.code, 10035);
    ExpectRecords({FailureRecord(caught.text)});
    EXPECT_TRUE(socket->IsValid());
    socket->Close();
    ExpectRecords({FailureRecord(caught.text), DisconnectedRecord()});
}

TEST_F(XtClose, AgainIsAFailureWithoutASecondRecord) {
    const auto socket = MakeAddressedXt();
    socket->Close();
    ClearTranscript();
    EXPECT_EQ(Catch([&] { socket->Close(); }), NotClosed.With(10038));
    EXPECT_EQ(SystemCalls(), (Lines{"closesocket(INVALID)", "WSAGetLastError()", "LogMessage"}));
    ExpectRecords({DisconnectedRecord(), NotClosed.RecordWith(10038)});
    EXPECT_EQ(FieldsOf(*socket), ClosedAddressedFields());
}

TEST_F(XtClose, WritesWhatTheRoutersAskFor) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        const auto socket = MakeAddressedXt();
        Switch(routers);
        const int requestsBefore = FormatterRequests();
        socket->Close();
        EXPECT_EQ(CountOf("LogMessage"), routers.connection ? 1 : 0);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.connection ? 1 : 0);
    }
}

TEST_F(XtClose, WhatTheLogThrowsIsLostWithTheRecord) {
    const auto socket = MakeAddressedXt();
    On::LogMessage().Throws(std::runtime_error("the disk is full"));
    EXPECT_NO_THROW(socket->Close());
    EXPECT_EQ(FieldsOf(*socket), ClosedAddressedFields());
}

TEST_F(XtClose, MissingMemoryForTheRecordCostsNothingElse) {
    FailEveryAllocation([&](std::size_t n) {
        const auto socket = MakeAddressedXt();
        const Starved starved = Starve(n, [&] { socket->Close(); });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(FieldsOf(*socket), ClosedAddressedFields()) << n;
        return starved.happened;
    });
}

TEST_F(XtClose, WorksWhileTheLayerIsDown) {
    const auto socket = MakeAddressedXt();
    BringLayerDown();
    ClearTranscript();
    socket->Close();
    EXPECT_EQ(Transcript(), Lines{"closesocket(1001)"});
    EXPECT_EQ(Catch([&] { socket->Close(); }), NotClosed.With(10038));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtCloseAtTheEnd, OfOpenSocketClosesAndRecordsOnce) {
    for (const SocketState state : OpenStates) {
        auto socket = MakeXt(state);
        StoreTexts(*socket);
        const std::string handle = std::to_string(socket->GetHandle());
        socket = {};
        EXPECT_EQ(SystemCalls(), (Lines{"closesocket(" + handle + ")", "LogMessage"})) << state;
        EXPECT_EQ(LoggedMessages().back().text,
                  u"Disconnected, Local address: here.example (4000), "
                  u"Remote address: there.example (http)");
    }
}

TEST_F(XtCloseAtTheEnd, OfSocketWithoutHandleOrOfClosedStateCallsNobody) {
    for (const SocketState state : OpenStates)
        const SocketXtImpl withoutHandle(Winsock::InvalidSocket, state, 1, 6,
                                         SocketXt::FAMILY_IPV4);
    { const SocketXtImpl closed(7, STATE_CLOSED, 1, 6, SocketXt::FAMILY_IPV4); }
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(XtCloseAtTheEnd, AfterCloseCallsNobody) {
    {
        const auto socket = MakeAddressedXt();
        socket->Close();
        ClearTranscript();
    }
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(XtCloseAtTheEnd, ComesWithTheLastReference) {
    auto socket = MakeAddressedXt();
    VelBase::ReturnPtrI<SocketXtImpl> second = socket.Get();
    socket = {};
    EXPECT_EQ(Transcript(), Lines{});
    second = {};
    EXPECT_EQ(CountOf("closesocket"), 1);
}

TEST_F(XtCloseAtTheEnd, ThroughEitherInterfaceFreesTheWholeObject) {
    const Socket* const classic =
        new SocketXtImpl(OpenHandle(), STATE_BOUND, 1, 6, SocketXt::FAMILY_IPV4);
    delete classic;
    const SocketXt* const extended =
        new SocketXtImpl(OpenHandle(), STATE_BOUND, 1, 6, SocketXt::FAMILY_IPV4);
    delete extended;
    EXPECT_EQ(OpenSockets(), Lines{});
}

TEST_F(XtCloseAtTheEnd, EachFailureIsReportedAndDropped) {
    for (const int error : ErrorNumbers()) {
        auto socket = MakeAddressedXt();
        On::Closesocket().Fails(error);
        EXPECT_NO_THROW(socket = {});
        EXPECT_EQ(TranscriptWithout({"closesocket", "WideFromCodePage"}),
                  (Lines{"WSAGetLastError()", LogLine(ErrorCategory, NotClosed.With(error).text)}));
    }
}

TEST_F(XtCloseAtTheEnd, CallsNoOverride) {
    Overriding::calls = 0;
    { const auto socket = MakeAddressedXt<Overriding>(); }
    EXPECT_EQ(Overriding::calls, 0);
    EXPECT_EQ(CountOf("closesocket"), 1);
    ExpectRecords({DisconnectedRecord()});
}

TEST_F(XtCloseAtTheEnd, LosesWhateverTheLogThrows) {
    for (const bool fails : {false, true}) {
        auto socket = MakeAddressedXt();
        if (fails) On::Closesocket().Fails(10038);
        On::LogMessage().Throws(7);
        EXPECT_NO_THROW(socket = {});
        EXPECT_EQ(CountOf("LogMessage"), 1);
    }
}

TEST_F(XtCloseAtTheEnd, AsksTheSystemOnceWhateverMemoryIsMissing) {
    const std::size_t failures = FailEveryAllocation([](std::size_t n) {
        auto socket = MakeAddressedXt();
        On::Closesocket().Fails(10055);
        const Starved starved = Starve(n, [&] { socket = {}; });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(CountOf("closesocket"), 1) << n;
        EXPECT_EQ(OpenSockets(), Lines{}) << n;
        return starved.happened;
    });
    EXPECT_GE(failures, 1U);
}

TEST_F(XtCloseAtTheEnd, WorksWhileTheLayerIsDown) {
    auto socket = MakeAddressedXt();
    BringLayerDown();
    ClearTranscript();
    On::Closesocket().Fails(10093);
    socket = {};
    EXPECT_EQ(CountOf("closesocket"), 1);
    EXPECT_EQ(FormatterRequests(), 0);
}

}  // namespace
}  // namespace SocketTests
