// Socket::Listen.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

class Listen : public SocketTest {};

TEST_F(Listen, AsksForTwoPendingConnectionsAndNothingElse) {
    const auto socket = MakeSocket();
    EXPECT_EQ(socket->Listen(), 0);
    EXPECT_EQ(Transcript(), Lines{"listen(1001, 2)"});
}

TEST_F(Listen, SystemsResultIsReturned) {
    const auto socket = MakeSocket();
    On::Listen().Returns(7);
    EXPECT_EQ(socket->Listen(), 7);
    EXPECT_EQ(FieldsOf(*socket).state, STATE_LISTENING);
}

TEST_F(Listen, SocketListensFromEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        socket->Listen();
        EXPECT_EQ(FieldsOf(*socket),
                  (SocketFields{socket->Handle(), STATE_LISTENING, "0.0.0.0:0", "0.0.0.0:0"}));
        EXPECT_EQ(socket->GetStatus(), 1);
    }
}

TEST_F(Listen, StoredAddressesStay) {
    const auto socket = MakeConnectedSocket();
    socket->Listen();
    EXPECT_EQ(FieldsOf(*socket),
              (SocketFields{1001, STATE_LISTENING, "10.1.2.3:50123", "10.1.2.9:80"}));
}

TEST_F(Listen, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedSocket();
    On::Listen().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Listen(); }),
              FailureOf("VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket", 10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"listen(INVALID, 2)", "WSAGetLastError()"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(Listen, EachFailureIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith = [](int number) { On::Listen().Fails(number); },
        .operation = [&] { socket->Listen(); },
        .text = "VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket",
        .calls = {"listen(1001, 2)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Listen, FailureKeepsEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        On::Listen().Fails(10022);
        Catch([&] { socket->Listen(); });
        EXPECT_EQ(FieldsOf(*socket).state, state);
    }
}

TEST_F(Listen, UnboundSocketIsToldWithTheNumberAsOneUnit) {
    const auto socket = MakeSocket();
    On::Listen().Fails(10022);
    const Caught caught = Catch([&] { socket->Listen(); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket, errno = \u2726 "
              u"Invalid argument");
    EXPECT_EQ(caught.code, 10022);
}

}  // namespace
}  // namespace SocketTests
