#include <Socket/SocketXtImpl.h>
#include <Socket/SystemSocket.h>

#include <climits>
#include <type_traits>

#include "SocketFixture.h"
#include "support/ForeignSocket.h"

namespace SocketTests {
namespace {

class SystemSocket : public SocketTest {};

// What is copied is the implementation's own; its copy is counted by itself.
TEST_F(SystemSocket, CopiedInterfaceTouchesNoSystemAndSharesNoCount) {
    Support::ForeignSocket original;
    original.AddRef();
    original.dataAvailable = true;
    const Support::ForeignSocket copy(original);
    EXPECT_EQ(copy.GetReferenceCount(), 0);
    EXPECT_TRUE(copy.dataAvailable);
    Support::ForeignSocket assigned;
    assigned = copy;
    EXPECT_EQ(assigned.GetReferenceCount(), 0);
    EXPECT_TRUE(assigned.dataAvailable);
    EXPECT_EQ(original.GetReferenceCount(), 1);
    EXPECT_EQ(Transcript(), std::vector<std::string>{});
}

TEST_F(SystemSocket, TypesWithoutNameAreLeftToTheSystem) {
    EXPECT_EQ(SystemTypeFrom(Socket::SOCKET_STREAM), 1);
    EXPECT_EQ(SystemTypeFrom(Socket::SOCKET_DATAGRAM), 2);
    for (const int other : {-1, 2, 3, 5, INT_MAX, INT_MIN})
        EXPECT_EQ(SystemTypeFrom(static_cast<Socket::SOCKET_TYPE>(other)), 0) << other;
}

TEST_F(SystemSocket, ProtocolsWithoutNameAreLeftToTheSystem) {
    EXPECT_EQ(SystemProtocolFrom(Socket::PROTOCOL_TCP), 6);
    EXPECT_EQ(SystemProtocolFrom(Socket::PROTOCOL_UDP), 17);
    for (const int other : {-1, 2, 6, 7, 17, INT_MAX, INT_MIN})
        EXPECT_EQ(SystemProtocolFrom(static_cast<Socket::SOCKET_PROTOCOL>(other)), 0) << other;
}

TEST_F(SystemSocket, SwitchingToNonBlockingIsOneCall) {
    EXPECT_TRUE(SwitchToNonBlocking(7));
    EXPECT_EQ(Transcript(), Lines{"ioctlsocket(7, 0x8004667E, 1)"});
}

TEST_F(SystemSocket, RefusedSwitchIsFalse) {
    for (const int error : ErrorNumbers()) {
        On::Ioctlsocket().Fails(error);
        EXPECT_FALSE(SwitchToNonBlocking(7)) << error;
    }
}

TEST_F(SystemSocket, AnyNumberOfBytesIsAvailableData) {
    for (const unsigned int count : {1U, 2U, 0x100U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        On::Ioctlsocket().Returns(count);
        EXPECT_TRUE(HasBytesAvailable(7)) << count;
    }
    On::Ioctlsocket().Returns(0);
    EXPECT_FALSE(HasBytesAvailable(7));
    EXPECT_EQ(Transcript(), Lines(7, "ioctlsocket(7, 0x4004667F)"));
}

TEST_F(SystemSocket, FailedQuestionForBytesIsNone) {
    // A system that writes the count and fails all the same.
    Observe("ioctlsocket", [](const Event& event) {
        *static_cast<unsigned int*>(const_cast<void*>(event.pointer)) = 5;
    });
    On::Ioctlsocket().Fails(10038);
    EXPECT_FALSE(HasBytesAvailable(7));
}

TEST_F(SystemSocket, StatusAsksAnyImplementationThroughItsInterface) {
    const VelBase::ReturnPtrI<Support::ForeignSocket> socket = new Support::ForeignSocket;
    EXPECT_EQ(StatusOf(*socket, STATE_CONNECTED), STATUS_IDLE);
    socket->dataAvailable = true;
    EXPECT_EQ(StatusOf(*socket, STATE_CONNECTED), STATUS_DATA_PENDING);
    EXPECT_EQ(socket->questions, 2);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SystemSocket, StatusOfOtherStatesAsksNobody) {
    const VelBase::ReturnPtrI<Support::ForeignSocket> socket = new Support::ForeignSocket;
    socket->dataAvailable = true;
    EXPECT_EQ(StatusOf(*socket, STATE_LISTENING), STATUS_LISTENING);
    for (const SocketState state : {STATE_CLOSED, STATE_CREATED, STATE_BOUND})
        EXPECT_EQ(StatusOf(*socket, state), STATUS_NONE) << state;
    EXPECT_EQ(socket->questions, 0);
}

TEST_F(SystemSocket, HandleOfAForeignImplementationIsNone) {
    const VelBase::ReturnPtrI<Support::ForeignSocket> foreign = new Support::ForeignSocket;
    const auto open = MakeSocket();
    EXPECT_EQ(HandleOf(*foreign), Winsock::InvalidSocket);
    EXPECT_FALSE(open->IsSameSocket(*foreign));
    EXPECT_TRUE(MakeClosedSocket()->IsSameSocket(*foreign));
}

TEST_F(SystemSocket, HandleOfAClassicSocketIsItsOwn) {
    const auto socket = MakeSocket();
    EXPECT_EQ(HandleOf(*socket), 1001U);
    socket->Close();
    EXPECT_EQ(HandleOf(*socket), Winsock::InvalidSocket);
}

// One that answers callers with another handle than it has.
class DisguisedSocket : public SocketXtImpl {
public:
    using SocketXtImpl::SocketXtImpl;
    SOCKET_HANDLE GetHandle() const override { return 5; }
};

TEST_F(SystemSocket, HandleOfAnExtendedSocketIsItsOwnWhateverItAnswers) {
    const Winsock::Handle open = OpenHandle();
    DisguisedSocket socket(open, STATE_CREATED, 1, 6, SocketXt::FAMILY_IPV4);
    EXPECT_EQ(socket.GetHandle(), 5U);
    EXPECT_EQ(HandleOf(socket), open);
    socket.Close();
    EXPECT_EQ(HandleOf(socket), Winsock::InvalidSocket);
}

TEST_F(SystemSocket, OwnerClosesItsHandleAtTheEndOfTheScope) {
    {
        const HandleOwner owner(OpenHandle());
        EXPECT_EQ(owner.Get(), 1001U);
        EXPECT_FALSE(owner.IsEmpty());
        EXPECT_EQ(Transcript(), Lines());
    }
    EXPECT_EQ(Transcript(), Lines{"closesocket(1001)"});
}

TEST_F(SystemSocket, OwnerHasNothingToSayWhenClosingFails) {
    On::Closesocket().Fails(10038);
    { const HandleOwner owner(OpenHandle()); }
    EXPECT_EQ(Transcript(), Lines{"closesocket(1001)"});
}

TEST_F(SystemSocket, OwnerLeavesAHandleThatWasHandedOver) {
    {
        HandleOwner owner(OpenHandle());
        owner.HandOver();
        EXPECT_TRUE(owner.IsEmpty());
    }
    EXPECT_EQ(Transcript(), Lines());
    ForgetInLedger("socket 1001");
}

TEST_F(SystemSocket, OwnerOfNothingClosesNothing) {
    {
        const HandleOwner owner(Winsock::InvalidSocket);
        EXPECT_TRUE(owner.IsEmpty());
    }
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SystemSocket, HandlesOfAllOtherValuesAreHandles) {
    for (const Winsock::Handle handle : {0ULL, 0xFFFFFFFFULL, 0xFFFFFFFFFFFFFFFEULL}) {
        HandleOwner owner(handle);
        EXPECT_FALSE(owner.IsEmpty()) << handle;
        owner.HandOver();
    }
}

static_assert(!std::is_copy_constructible_v<HandleOwner>);
static_assert(!std::is_copy_assignable_v<HandleOwner>);

}  // namespace
}  // namespace SocketTests
