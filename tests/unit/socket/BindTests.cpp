// Socket::Bind.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

class Bind : public SocketTest {};

TEST_F(Bind, AddressIsFamilyPortInNetworkOrderOctetsAndEightZeroBytes) {
    const auto socket = MakeSocket();
    socket->Bind(Octets(1, 2, 3, 4), 0x1234);
    EXPECT_EQ(LastEventOf("bind").bytes,
              std::string("\x02\x00\x12\x34\x01\x02\x03\x04\0\0\0\0\0\0\0\0", 16));
}

TEST_F(Bind, MakesOneSystemCallAndNothingElse) {
    const auto socket = MakeSocket();
    socket->Bind(Octets(255, 0, 128, 7), 65535);
    EXPECT_EQ(Transcript(), Lines{"bind(1001, 255.0.128.7:65535, 16)"});
}

TEST_F(Bind, PortZeroIsPassedOn) {
    const auto socket = MakeSocket();
    socket->Bind(Octets(), 0);
    EXPECT_EQ(Transcript(), Lines{"bind(1001, 0.0.0.0:0, 16)"});
}

TEST_F(Bind, SocketIsBoundFromEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        socket->Bind(Octets(10, 0, 0, 1), 80);
        EXPECT_EQ(FieldsOf(*socket),
                  (SocketFields{socket->Handle(), STATE_BOUND, "0.0.0.0:0", "0.0.0.0:0"}));
    }
}

TEST_F(Bind, StoredAddressesStay) {
    const auto socket = MakeConnectedSocket();
    socket->Bind(Octets(10, 0, 0, 1), 80);
    EXPECT_EQ(FieldsOf(*socket),
              (SocketFields{1001, STATE_BOUND, "10.1.2.3:50123", "10.1.2.9:80"}));
}

TEST_F(Bind, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedSocket();
    On::Bind().Fails(10038);
    EXPECT_EQ(Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); }),
              FailureOf("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80",
                        10038));
    EXPECT_EQ(TranscriptWithout({"LogMessage"}),
              (Lines{"bind(INVALID, 10.0.0.1:80, 16)", "WSAGetLastError()"}));
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
}

TEST_F(Bind, EachFailureIsReportedAndLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    ExpectEachFailure({
        .failWith = [](int number) { On::Bind().Fails(number); },
        .operation = [&] { socket->Bind(Octets(10, 0, 0, 1), 80); },
        .text = "VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80",
        .calls = {"bind(1001, 10.0.0.1:80, 16)", "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(Bind, FailureKeepsEveryState) {
    for (const SocketState state : OpenStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeSocket(state);
        On::Bind().Fails(10022);
        Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); });
        EXPECT_EQ(FieldsOf(*socket),
                  (SocketFields{socket->Handle(), state, "0.0.0.0:0", "0.0.0.0:0"}));
    }
}

TEST_F(Bind, TakenPortIsToldWithColonAndBlank) {
    const auto socket = MakeSocket();
    On::Bind().Fails(10048);
    const Caught caught = Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); });
    EXPECT_EQ(caught.text,
              u"VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80, errno = "
              u"\u2740 Address already in use");
    EXPECT_EQ(caught.code, 10048);
}

TEST_F(Bind, NumberWithoutLowBitsEndsTheText) {
    const auto socket = MakeSocket();
    On::Bind().Fails(65536);
    const Caught caught = Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); });
    EXPECT_EQ(
        caught.text,
        u"VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80, errno = ");
    EXPECT_EQ(caught.code, -1);
}

TEST_F(Bind, TextShowsTheSmallestAndTheLargestEndpoint) {
    const auto socket = MakeSocket();
    On::Bind().Fails(10049).Fails(10049);
    EXPECT_EQ(
        Catch([&] { socket->Bind(Octets(), 0); }),
        FailureOf("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 0.0.0.0: 0", 10049));
    EXPECT_EQ(Catch([&] { socket->Bind(Octets(255, 255, 255, 255), 65535); }),
              FailureOf("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: "
                        "255.255.255.255: 65535",
                        10049));
}

TEST_F(Bind, FailureIsToldWhileTheLayerIsDown) {
    const auto socket = MakeSocket();
    BringLayerDown();
    On::Bind().Fails(10093);
    EXPECT_EQ(Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); }),
              FailureOf("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80",
                        10093));
    ExpectRecords({});
}

TEST_F(Bind, ExhaustedMemoryWhileTheFailureIsToldLeavesTheSocketAsItWas) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    // The first request is the address that the operation takes.
    std::size_t n = 2;
    for (bool exhausted = true; exhausted; ++n) {
        On::Bind().Fails(10048);
        exhausted =
            RunsOutOfMemory(n, [&] { Catch([&] { socket->Bind(Octets(10, 0, 0, 1), 80); }); });
        EXPECT_EQ(FieldsOf(*socket), before);
    }
    EXPECT_GT(n, 4U);
}

}  // namespace
}  // namespace SocketTests
