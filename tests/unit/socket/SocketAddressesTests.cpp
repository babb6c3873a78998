#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketAddresses : public SocketTest {};

// The question for one of the two ends.
struct Question {
    const char* name;
    SocketAddress (*ask)(const Socket&);
    AddressAnswers answers;
    const char* call;  // of the socket 1001
    const char* failure;
};

std::vector<Question> Questions() {
    // Required: both carry the label of Send.
    return {
        {"local", [](const Socket& socket) { return socket.GetLocalAddress(); }, On::Getsockname(),
         "getsockname(1001, 16)", "VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed"},
        {"remote", [](const Socket& socket) { return socket.GetRemoteAddress(); },
         On::Getpeername(), "getpeername(1001, 16)",
         "VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed"}};
}

TEST_F(SocketAddresses, AreWhatTheSystemTells) {
    const auto socket = MakeSocket();
    for (Question& question : Questions()) {
        for (const int port : {0, 1, 80, 255, 256, 0x1234, 50123, 65535}) {
            ClearTranscript();
            question.answers.Returns("192.168.3.254", static_cast<unsigned short>(port));
            const SocketAddress address = question.ask(*socket);
            EXPECT_EQ(EndpointText(address), "192.168.3.254:" + std::to_string(port));
            EXPECT_EQ(Transcript(), Lines{question.call});
        }
    }
}

TEST_F(SocketAddresses, KeepTheOrderOfTheirOctets) {
    const auto socket = MakeSocket();
    for (Question& question : Questions()) {
        for (const char* const dotted : {"0.0.0.0", "1.2.3.4", "255.255.255.255", "128.0.0.1"}) {
            question.answers.Returns(dotted, 7);
            EXPECT_EQ(EndpointText(question.ask(*socket)), std::string(dotted) + ":7");
        }
    }
}

TEST_F(SocketAddresses, AreNotStored) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (Question& question : Questions()) {
        question.answers.Returns("172.16.0.1", 999);
        question.ask(*socket);
        EXPECT_EQ(FieldsOf(*socket), before) << question.name;
    }
}

TEST_F(SocketAddresses, AreNotTakenFromTheStoredOnes) {
    const auto socket = MakeConnectedSocket();
    On::Getsockname().Returns("10.9.9.9", 9).Returns("10.9.9.8", 8);
    EXPECT_EQ(EndpointText(socket->GetLocalAddress()), "10.9.9.9:9");
    EXPECT_EQ(EndpointText(socket->GetLocalAddress()), "10.9.9.8:8");
    On::Getpeername().Returns("10.7.7.7", 7).Returns("10.7.7.6", 6);
    EXPECT_EQ(EndpointText(socket->GetRemoteAddress()), "10.7.7.7:7");
    EXPECT_EQ(EndpointText(socket->GetRemoteAddress()), "10.7.7.6:6");
}

TEST_F(SocketAddresses, AreAskedForInEveryState) {
    for (const SocketState state : AllStates) {
        const auto socket = MakeSocket(state);
        socket->GetLocalAddress();
        socket->GetRemoteAddress();
        EXPECT_EQ(CountOf("getsockname"), 1) << state;
        EXPECT_EQ(CountOf("getpeername"), 1) << state;
        EXPECT_EQ(FieldsOf(*socket).state, state);
        socket->Close();
    }
}

TEST_F(SocketAddresses, LongerOnesThanThereIsRoomForAreCut) {
    const auto socket = MakeSocket();
    for (Question& question : Questions()) {
        question.answers.ReturnsRaw(SocketAddressBytes("10.1.1.1", 5) + std::string(12, '\xEE'));
        EXPECT_EQ(EndpointText(question.ask(*socket)), "10.1.1.1:5");
    }
}

TEST_F(SocketAddresses, FailureIsLoggedAndThrownWithTheLabelOfSend) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (Question& question : Questions()) {
        for (const int error : ErrorNumbers()) {
            ClearTranscript();
            question.answers.Fails(error);
            EXPECT_EQ(Catch([&] { question.ask(*socket); }), FailureOf(question.failure, error));
            EXPECT_EQ(Transcript(),
                      (Lines{question.call, "WSAGetLastError()",
                             LogLine(ErrorCategory, FailureText(question.failure, error))}));
            EXPECT_EQ(FieldsOf(*socket), before) << question.name << ' ' << error;
        }
    }
}

TEST_F(SocketAddresses, FailuresAreFailureRecords) {
    const auto socket = MakeSocket();
    On::Getsockname().Fails(10022);
    On::Getpeername().Fails(10057);
    Catch([&] { socket->GetLocalAddress(); });
    Catch([&] { socket->GetRemoteAddress(); });
    ExpectRecords({FailureRecord(u"VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed, "
                                 u"errno = \u2726 Invalid argument"),
                   FailureRecord(u"VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed, "
                                 u"errno = \u2749 Socket is not connected")});
}

TEST_F(SocketAddresses, FailureIsThrownAlikeWithAnyRoutersOn) {
    const auto socket = MakeSocket();
    for (Question& question : Questions()) {
        for (const Routers& routers : AllCombinationsOfRouters()) {
            Switch(routers);
            ClearTranscript();
            const int requestsBefore = FormatterRequests();
            question.answers.Fails(10038);
            EXPECT_EQ(Catch([&] { question.ask(*socket); }), FailureOf(question.failure, 10038));
            EXPECT_EQ(CountOf("LogMessage"), routers.error ? 1 : 0);
            EXPECT_EQ(FormatterRequests() - requestsBefore, routers.error ? 1 : 0);
        }
    }
}

TEST_F(SocketAddresses, FailureIsThrownWhileTheLayerIsDown) {
    SocketImpl socket(1001, STATE_CONNECTED);
    Winsock::socket(2, 1, 6);
    BringLayerDown();
    for (Question& question : Questions()) {
        ClearTranscript();
        question.answers.Fails(10093);
        EXPECT_EQ(Catch([&] { question.ask(socket); }), FailureOf(question.failure, 10093));
        EXPECT_EQ(Transcript(), (Lines{question.call, "WSAGetLastError()"}));
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketAddresses, WithoutMemoryForTheAnswerAreBadAlloc) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const Question& question : Questions()) {
        const std::size_t failures = FailEveryAllocation([&](std::size_t n) {
            const Starved starved = Starve(n, [&] { question.ask(*socket); });
            EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
            EXPECT_EQ(FieldsOf(*socket), before) << n;
            return starved.happened;
        });
        EXPECT_GE(failures, 1U) << question.name;
    }
}

TEST_F(SocketAddresses, WithoutMemoryForTheFailuresTextAreBadAlloc) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (Question& question : Questions()) {
        const std::size_t failures = FailEveryAllocation([&](std::size_t n) {
            question.answers.Fails(10055);
            const Starved starved = Starve(n, [&] { question.ask(*socket); });
            EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
            EXPECT_EQ(FieldsOf(*socket), before) << n;
            return starved.happened;
        });
        EXPECT_GE(failures, 1U) << question.name;
    }
}

}  // namespace
}  // namespace SocketTests
