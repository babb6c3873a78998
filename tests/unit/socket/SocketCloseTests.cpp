#include <stdexcept>

#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketClose : public SocketTest {};
class SocketCloseAtTheEnd : public SocketTest {};

constexpr char CloseFailed[] = "VelNet::SocketImpl::Close() - FAIL. Cannot close a socket";
constexpr char DisconnectedFormat[] =
    "Disconnected, Local address: %1 (%2), Remote address: %3 (%4)";

Record DisconnectedRecord() {
    return {ConnectionCategory, DisconnectedFormat,
            EndpointArguments(LocalHost, LocalPort, RemoteHost, RemotePort)};
}

std::string DisconnectedLine() {
    return LogLine(ConnectionCategory,
                   u"Disconnected, Local address: 10.1.2.3 (50123), Remote address: 10.1.2.9 (80)");
}

// Of a socket that never had addresses, or has forgotten them.
std::string AddresslessLine() {
    return LogLine(ConnectionCategory,
                   u"Disconnected, Local address: 0.0.0.0 (0), Remote address: 0.0.0.0 (0)");
}

std::string FailureLine(int error) {
    return LogLine(ErrorCategory, FailureText(CloseFailed, error));
}

// The overrides must not be called by the end of the object.
class Overriding : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    void Close() noexcept override { ++calls; }
    bool IsValid() const override {
        ++calls;
        return false;
    }

    static inline int calls = 0;
};

TEST_F(SocketClose, ClosesTheHandleThenRecordsThenForgets) {
    const auto socket = MakeConnectedSocket();
    socket->Close();
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", DisconnectedLine()}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    EXPECT_EQ(OpenSockets(), Lines());
}

TEST_F(SocketClose, RecordsTheStoredAddressesByTheirKinds) {
    const auto socket = MakeConnectedSocket();
    socket->Close();
    ExpectRecords({DisconnectedRecord()});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(SocketClose, SystemIsAskedWhileTheSocketIsStillWhatItWas) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    Observe("closesocket", [&](const Event&) { EXPECT_EQ(FieldsOf(*socket), before); });
    socket->Close();
    EXPECT_EQ(CountOf("closesocket"), 1);
}

TEST_F(SocketClose, RecordIsWrittenWhileOnlyTheAddressesAreLeft) {
    const auto socket = MakeConnectedSocket();
    Observe("LogMessage", [&](const Event&) {
        EXPECT_EQ(FieldsOf(*socket), (SocketFields{Winsock::InvalidSocket, STATE_CLOSED,
                                                   "10.1.2.3:50123", "10.1.2.9:80"}));
    });
    socket->Close();
    EXPECT_EQ(CountOf("LogMessage"), 1);
}

TEST_F(SocketClose, FailureIsLoggedBeforeTheHandleIsForgotten) {
    const auto socket = MakeConnectedSocket();
    Switch({.error = true});
    const SocketFields before = FieldsOf(*socket);
    Observe("LogMessage", [&](const Event&) { EXPECT_EQ(FieldsOf(*socket), before); });
    On::Closesocket().Fails(10054);
    socket->Close();
    EXPECT_EQ(CountOf("LogMessage"), 1);
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, FailureIsLoggedAndTheSocketIsClosedAllTheSame) {
    for (const int error : ErrorNumbers()) {
        const auto socket = MakeConnectedSocket();
        const std::string handle = std::to_string(socket->Handle());
        On::Closesocket().Fails(error);
        EXPECT_EQ(Catch([&] { socket->Close(); }), Caught());
        EXPECT_EQ(Transcript(), (Lines{"closesocket(" + handle + ")", "WSAGetLastError()",
                                       FailureLine(error), DisconnectedLine()}));
        EXPECT_EQ(FieldsOf(*socket), ClosedFields()) << error;
    }
}

TEST_F(SocketClose, FailureIsAFailureRecord) {
    const auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10035);
    socket->Close();
    ExpectRecords({FailureRecord(u"VelNet::SocketImpl::Close() - FAIL. Cannot close a socket, "
                                 u"errno = \u2733 Resource temporarily unavailable"),
                   DisconnectedRecord()});
    EXPECT_EQ(FormatterRequests(), 2);
}

TEST_F(SocketClose, WritesWhatTheRoutersAskFor) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        const auto socket = MakeConnectedSocket();
        Switch(routers);
        const int requestsBefore = FormatterRequests();
        Lines expected;
        if (routers.error) expected.push_back(FailureLine(10050));
        if (routers.connection) expected.push_back(DisconnectedLine());
        On::Closesocket().Fails(10050);
        socket->Close();
        EXPECT_EQ(TranscriptWithout({"closesocket", "WSAGetLastError"}), expected);
        EXPECT_EQ(FormatterRequests() - requestsBefore, static_cast<int>(expected.size()));
        EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    }
}

TEST_F(SocketClose, SuccessWritesOneRecordAtMost) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        const auto socket = MakeConnectedSocket();
        Switch(routers);
        socket->Close();
        EXPECT_EQ(TranscriptWithout({"closesocket"}),
                  routers.connection ? Lines{DisconnectedLine()} : Lines());
        EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    }
}

TEST_F(SocketClose, WithTheRoutersOffMakesNoTexts) {
    const auto socket = MakeConnectedSocket();
    Switch({});
    On::Closesocket().Fails(10050);
    const Allocations::Mark mark;
    socket->Close();
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, AnyFlagByteButZeroWritesTheRecord) {
    for (int flag = 0; flag < 256; ++flag) {
        const auto socket = MakeConnectedSocket();
        SetRouterFlag(ConnectionCategory, static_cast<unsigned char>(flag));
        socket->Close();
        EXPECT_EQ(CountOf("LogMessage"), flag == 0 ? 0 : 1) << flag;
    }
}

TEST_F(SocketClose, NeverConnectedSocketHasTheAddressesOfNobody) {
    const auto socket = MakeSocket();
    socket->Close();
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", AddresslessLine()}));
}

TEST_F(SocketClose, AsksTheSystemInEveryState) {
    for (const SocketState state : AllStates) {
        const auto socket = MakeSocket(state);
        socket->Close();
        EXPECT_EQ(CountOf("closesocket"), 1) << state;
        EXPECT_EQ(CountOf("LogMessage"), 1) << state;
        EXPECT_EQ(FieldsOf(*socket), ClosedFields()) << state;
    }
}

TEST_F(SocketClose, AgainFailsAndRecordsNobodysAddresses) {
    const auto socket = MakeConnectedSocket();
    socket->Close();
    ClearTranscript();
    socket->Close();
    EXPECT_EQ(Transcript(), (Lines{"closesocket(INVALID)", "WSAGetLastError()", FailureLine(10038),
                                   AddresslessLine()}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    EXPECT_FALSE(socket->IsValid());
}

TEST_F(SocketClose, WhatTheLogThrowsIsLost) {
    const auto throwing = [] { On::LogMessage().Throws(std::runtime_error("the disk is full")); };
    const auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10038);
    throwing();
    throwing();
    socket->Close();
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", "WSAGetLastError()", FailureLine(10038),
                                   DisconnectedLine()}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, WhateverTheLogThrowsIsLost) {
    const auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10038);
    On::LogMessage().Throws(7).Throws("no exception at all");
    socket->Close();
    EXPECT_EQ(CountOf("LogMessage"), 2);
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, RecordIsWrittenThoughTheFailuresLogThrows) {
    const auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10038);
    On::LogMessage().Throws(std::runtime_error("the disk is full")).Passes();
    socket->Close();
    EXPECT_EQ(Transcript().back(), DisconnectedLine());
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, ForgetsHandleAndAddressesWhateverMemoryIsMissing) {
    const std::size_t failures = FailEveryAllocation([](std::size_t n) {
        const auto socket = MakeConnectedSocket();
        On::Closesocket().Fails(10055);
        const Starved starved = Starve(n, [&] { socket->Close(); });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(CountOf("closesocket"), 1) << n;
        EXPECT_FALSE(socket->IsValid()) << n;
        EXPECT_EQ(FieldsOf(*socket), ClosedFields()) << n;
        EXPECT_EQ(OpenSockets(), Lines()) << n;
        return starved.happened;
    });
    EXPECT_GE(failures, 1U) << "the failure's text";
}

TEST_F(SocketClose, MissingMemoryForTheFailuresTextCostsNoRecord) {
    const auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10055);
    EXPECT_TRUE(Starve(1, [&] { socket->Close(); }).happened);
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", "WSAGetLastError()", DisconnectedLine()}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, TakesNoMemoryForTheRecord) {
    const auto socket = MakeConnectedSocket();
    EXPECT_FALSE(Starve(1, [&] { socket->Close(); }).happened);
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", DisconnectedLine()}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(SocketClose, WorksWhileTheLayerIsDown) {
    const auto socket = MakeConnectedSocket();
    BringLayerDown();
    ClearTranscript();
    On::Closesocket().Fails(10093);
    socket->Close();
    EXPECT_EQ(TranscriptWithout({"WSAGetLastError"}), Lines{"closesocket(1001)"});
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketCloseAtTheEnd, OfOpenSocketClosesAndRecordsOnce) {
    for (const SocketState state : OpenStates) {
        const Winsock::Handle handle = OpenHandle();
        { const SocketImpl socket(handle, state); }
        EXPECT_EQ(Transcript(),
                  (Lines{"closesocket(" + std::to_string(handle) + ")", AddresslessLine()}))
            << state;
    }
}

TEST_F(SocketCloseAtTheEnd, OfSocketWithoutHandleCallsNobody) {
    for (const SocketState state : AllStates) {
        { const SocketImpl socket(Winsock::InvalidSocket, state); }
        EXPECT_EQ(Transcript(), Lines()) << state;
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketCloseAtTheEnd, OfClosedStateLeavesTheHandleAlone) {
    { const SocketImpl socket(OpenHandle(), STATE_CLOSED); }
    EXPECT_EQ(Transcript(), Lines());
    ForgetInLedger("socket 1001");
}

TEST_F(SocketCloseAtTheEnd, AfterCloseCallsNobody) {
    {
        const auto socket = MakeConnectedSocket();
        socket->Close();
        ClearTranscript();
    }
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SocketCloseAtTheEnd, ComesWithTheLastReference) {
    auto socket = MakeConnectedSocket();
    VelBase::ReturnPtrI<SocketImpl> second = socket.Get();
    EXPECT_EQ(socket->GetReferenceCount(), 2);
    socket = {};
    EXPECT_EQ(second->GetReferenceCount(), 1);
    EXPECT_EQ(Transcript(), Lines());
    second = {};
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", DisconnectedLine()}));
    ExpectRecords({DisconnectedRecord()});
}

TEST_F(SocketCloseAtTheEnd, OfSocketFromTheFactoryClosesItsHandle) {
    auto socket = CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    ClearTranscript();
    socket = {};
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", AddresslessLine()}));
}

TEST_F(SocketCloseAtTheEnd, ThroughTheInterfaceFreesTheWholeObject) {
    const Socket* const socket = new SocketImpl(OpenHandle(), STATE_BOUND);
    delete socket;
    EXPECT_EQ(CountOf("closesocket"), 1);
}

TEST_F(SocketCloseAtTheEnd, LogsAFailureOfTheSystem) {
    for (const int error : ErrorNumbers()) {
        auto socket = MakeConnectedSocket();
        On::Closesocket().Fails(error);
        socket = {};
        EXPECT_EQ(TranscriptWithout({"closesocket"}),
                  (Lines{"WSAGetLastError()", FailureLine(error), DisconnectedLine()}));
    }
}

TEST_F(SocketCloseAtTheEnd, CallsNoOverride) {
    Overriding::calls = 0;
    { const auto socket = MakeConnectedSocket<Overriding>(); }
    EXPECT_EQ(Overriding::calls, 0);
    EXPECT_EQ(Transcript(), (Lines{"closesocket(1001)", DisconnectedLine()}));
}

TEST_F(SocketCloseAtTheEnd, LosesWhatTheLogThrows) {
    auto socket = MakeConnectedSocket();
    On::Closesocket().Fails(10038);
    On::LogMessage().Throws(std::runtime_error("the disk is full")).Throws(7);
    socket = {};
    EXPECT_EQ(CountOf("LogMessage"), 2);
    EXPECT_EQ(OpenSockets(), Lines());
}

TEST_F(SocketCloseAtTheEnd, ClosesTheHandleWhateverMemoryIsMissing) {
    const std::size_t failures = FailEveryAllocation([](std::size_t n) {
        auto socket = MakeConnectedSocket();
        On::Closesocket().Fails(10055);
        const Starved starved = Starve(n, [&] { socket = {}; });
        EXPECT_FALSE(starved.outOfMemory) << n;
        EXPECT_EQ(CountOf("closesocket"), 1) << n;
        EXPECT_EQ(OpenSockets(), Lines()) << n;
        return starved.happened;
    });
    EXPECT_GE(failures, 1U) << "the failure's text";
}

TEST_F(SocketCloseAtTheEnd, WorksWhileTheLayerIsDown) {
    auto socket = MakeConnectedSocket();
    BringLayerDown();
    ClearTranscript();
    On::Closesocket().Fails(10093);
    socket = {};
    EXPECT_EQ(TranscriptWithout({"WSAGetLastError"}), Lines{"closesocket(1001)"});
}

}  // namespace
}  // namespace SocketTests
