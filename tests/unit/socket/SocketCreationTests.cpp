#include <climits>
#include <type_traits>

#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketCreation : public SocketTest {};

static_assert(std::is_same_v<std::underlying_type_t<Socket::SOCKET_TYPE>, int>);
static_assert(std::is_same_v<std::underlying_type_t<Socket::SOCKET_PROTOCOL>, int>);
static_assert(Socket::SOCKET_STREAM == 0 && Socket::SOCKET_DATAGRAM == 1);
static_assert(Socket::PROTOCOL_TCP == 0 && Socket::PROTOCOL_UDP == 1);
static_assert(
    std::is_same_v<decltype(&CreateSocket),
                   VelBase::ReturnPtrI<Socket> (*)(Socket::SOCKET_TYPE, Socket::SOCKET_PROTOCOL)>);

constexpr char Refused[] = "VelNet::CreateSocket() - FAIL. The ::socket failed";

VelBase::ReturnPtrI<Socket> Create(int type = 0, int protocol = 0) {
    return CreateSocket(static_cast<Socket::SOCKET_TYPE>(type),
                        static_cast<Socket::SOCKET_PROTOCOL>(protocol));
}

const SocketImpl& ImplementationOf(const Socket& socket) {
    return dynamic_cast<const SocketImpl&>(socket);
}

TEST_F(SocketCreation, EveryPairOfTypeAndProtocolIsPutToTheSystem) {
    const struct {
        int type, protocol;
        const char* call;
    } pairs[] = {
        {0, 0, "socket(2, 1, 6)"},       {1, 1, "socket(2, 2, 17)"},
        {1, 0, "socket(2, 2, 6)"},       {0, 1, "socket(2, 1, 17)"},
        {5, 7, "socket(2, 0, 0)"},       {0, 2, "socket(2, 1, 0)"},
        {2, 0, "socket(2, 0, 6)"},       {-1, 1, "socket(2, 0, 17)"},
        {1, -1, "socket(2, 2, 0)"},      {17, 6, "socket(2, 0, 0)"},
        {INT_MIN, 0, "socket(2, 0, 6)"}, {0, INT_MAX, "socket(2, 1, 0)"},
        {256, 256, "socket(2, 0, 0)"},   {65536, 65537, "socket(2, 0, 0)"},
    };
    for (const auto& pair : pairs) {
        ClearTranscript();
        const auto socket = Create(pair.type, pair.protocol);
        EXPECT_EQ(Transcript(), Lines{pair.call});
    }
}

TEST_F(SocketCreation, NewSocketIsCreatedAndHasNoAddresses) {
    const auto socket = Create();
    EXPECT_EQ(FieldsOf(ImplementationOf(*socket)),
              (SocketFields{1001, STATE_CREATED, "0.0.0.0:0", "0.0.0.0:0"}));
    EXPECT_TRUE(socket->IsValid());
    EXPECT_EQ(socket->GetStatus(), 0);
}

TEST_F(SocketCreation, NewSocketHasOneReferenceAndIsNotLogged) {
    const auto socket = Create();
    EXPECT_EQ(ImplementationOf(*socket).GetReferenceCount(), 1);
    EXPECT_EQ(FormatterRequests(), 0);
    ExpectRecords({});
}

TEST_F(SocketCreation, EachSocketIsANewOne) {
    const auto one = Create();
    const auto other = Create();
    EXPECT_FALSE(one->IsSameSocket(*other));
    EXPECT_NE(one.Get(), other.Get());
}

TEST_F(SocketCreation, HandleKeepsAllItsBits) {
    for (const Winsock::Handle handle : {0ULL, 0xFFFFFFFFULL, 0x123456789ABCULL, ~0ULL - 1}) {
        On::Socket().Returns(static_cast<long long>(handle));
        const auto socket = Create();
        EXPECT_EQ(ImplementationOf(*socket).Handle(), handle);
        EXPECT_TRUE(socket->IsValid());
    }
}

TEST_F(SocketCreation, RefusalIsLoggedAndThrownWithTheSystemsNumber) {
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Socket().Fails(error);
        const Caught caught = Catch([] { Create(); });
        EXPECT_EQ(caught, FailureOf(Refused, error));
        EXPECT_EQ(Transcript(), (Lines{"socket(2, 1, 6)", "WSAGetLastError()",
                                       LogLine(ErrorCategory, FailureText(Refused, error))}));
    }
}

TEST_F(SocketCreation, RefusalIsOneFailureRecord) {
    On::Socket().Fails(10024);
    Catch([] { Create(); });
    ExpectRecords(
        {FailureRecord(u"VelNet::CreateSocket() - FAIL. The ::socket failed, errno = "
                       u"\u2728 Too many open files")});
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(SocketCreation, RefusedPairOfDatagramAndTcpHasTheUnknownCode) {
    On::Socket().Fails(10043);
    const Caught caught = Catch([] { Create(1, 0); });
    EXPECT_EQ(caught.text,
              u"VelNet::CreateSocket() - FAIL. The ::socket failed, errno = "
              u"\u273B Unknown error");
    EXPECT_EQ(caught.code, -1);
}

TEST_F(SocketCreation, RefusalIsThrownAlikeWithAnyRoutersOn) {
    for (const Routers& routers : AllCombinationsOfRouters()) {
        Switch(routers);
        ClearTranscript();
        const int requestsBefore = FormatterRequests();
        On::Socket().Fails(10050);
        EXPECT_EQ(Catch([] { Create(); }), FailureOf(Refused, 10050));
        EXPECT_EQ(CountOf("LogMessage"), routers.error ? 1 : 0);
        EXPECT_EQ(FormatterRequests() - requestsBefore, routers.error ? 1 : 0);
    }
}

TEST_F(SocketCreation, RefusalWithTheErrorRouterOffIsNotLogged) {
    Switch({.error = false, .connection = true, .packet = true, .verbose = true});
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Socket().Fails(error);
        EXPECT_EQ(Catch([] { Create(); }), FailureOf(Refused, error));
        EXPECT_EQ(Transcript(), (Lines{"socket(2, 1, 6)", "WSAGetLastError()"}));
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketCreation, AnyFlagByteButZeroLogsTheRefusal) {
    for (int flag = 0; flag < 256; ++flag) {
        SetRouterFlag(ErrorCategory, static_cast<unsigned char>(flag));
        ClearTranscript();
        On::Socket().Fails(10013);
        Catch([] { Create(); });
        EXPECT_EQ(CountOf("LogMessage"), flag == 0 ? 0 : 1) << flag;
    }
}

TEST_F(SocketCreation, RefusalIsThrownWhileTheLayerIsDown) {
    BringLayerDown();
    ClearTranscript();
    On::Socket().Fails(10093);
    EXPECT_EQ(Catch([] { Create(); }), FailureOf(Refused, 10093));
    EXPECT_EQ(Transcript(), (Lines{"socket(2, 1, 6)", "WSAGetLastError()"}));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketCreation, HandleIsClosedWhenThereIsNoMemoryForTheSocket) {
    Switch({});
    const std::size_t failures = FailEveryAllocation([](std::size_t n) {
        ClearTranscript();
        VelBase::ReturnPtrI<Socket> socket;
        const Starved starved = Starve(n, [&] { socket = Create(); });
        EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
        EXPECT_EQ(CountOf("socket"), 1) << n;
        EXPECT_EQ(CountOf("closesocket"), starved.happened ? 1 : 0) << n;
        EXPECT_EQ(OpenSockets().size(), starved.happened ? 0U : 1U) << n;
        return starved.happened;
    });
    EXPECT_GE(failures, 5U) << "the socket and its two addresses";
}

TEST_F(SocketCreation, SocketThatWasNotMadeIsNotRecordedAsDisconnected) {
    EXPECT_TRUE(Starve(1, [] { Create(); }).outOfMemory);
    EXPECT_EQ(Transcript(), (Lines{"socket(2, 1, 6)", "closesocket(1001)"}));
}

TEST_F(SocketCreation, RefusalWithoutMemoryForItsTextIsBadAlloc) {
    const std::size_t failures = FailEveryAllocation([](std::size_t n) {
        ClearTranscript();
        On::Socket().Fails(10055);
        const Starved starved = Starve(n, [] { Create(); });
        EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
        EXPECT_EQ(CountOf("closesocket"), 0) << n;
        return starved.happened;
    });
    EXPECT_GE(failures, 1U) << "the text";
}

TEST_F(SocketCreation, SocketMadeWithoutArgumentsIsClosed) {
    const VelBase::ReturnPtrI<SocketImpl> socket = new SocketImpl;
    EXPECT_EQ(FieldsOf(*socket), ClosedFields());
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SocketCreation, SocketMadeOfHandleAndStateKeepsBoth) {
    for (const SocketState state :
         {STATE_CLOSED, STATE_CREATED, STATE_BOUND, STATE_LISTENING, STATE_CONNECTED}) {
        SocketImpl socket(Winsock::InvalidSocket - 5, state);
        EXPECT_EQ(FieldsOf(socket),
                  (SocketFields{Winsock::InvalidSocket - 5, state, "0.0.0.0:0", "0.0.0.0:0"}));
    }
}

TEST_F(SocketCreation, NewObjectHasNoReference) {
    const SocketImpl socket;
    EXPECT_EQ(socket.GetReferenceCount(), 0);
    const VelBase::ReturnPtrI<SocketImpl> first = new SocketImpl;
    EXPECT_EQ(first->GetReferenceCount(), 1);
}

TEST_F(SocketCreation, MakingASocketCallsNobody) {
    const Winsock::Handle handle = OpenHandle();
    const VelBase::ReturnPtrI<SocketImpl> socket = new SocketImpl(handle, STATE_CREATED);
    EXPECT_EQ(Transcript(), Lines());
}

}  // namespace
}  // namespace SocketTests
