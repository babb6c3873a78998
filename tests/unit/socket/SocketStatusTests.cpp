#include <algorithm>
#include <functional>
#include <type_traits>

#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketStatus : public SocketTest {};

static_assert(std::is_same_v<std::underlying_type_t<SocketState>, unsigned int>);
static_assert(STATE_CLOSED == 0 && STATE_CREATED == 1 && STATE_BOUND == 2 && STATE_LISTENING == 3 &&
              STATE_CONNECTED == 4);
static_assert(STATUS_NONE == 0 && STATUS_LISTENING == 1 && STATUS_DATA_PENDING == 2 &&
              STATUS_IDLE == 3);
static_assert(Winsock::InvalidSocket == 0xFFFFFFFFFFFFFFFFULL);

TEST_F(SocketStatus, FieldsStandInTheirOrder) {
    const auto socket = MakeSocket();
    const std::vector<const void*> addresses = FieldAddressesOf(*socket);
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<const void*>()));
}

// Answers the question for data itself and counts how often it is asked.
class OwnAnswer : public SocketImpl {
public:
    using SocketImpl::SocketImpl;
    bool IsDataAvailable() const override {
        ++questions;
        return answer;
    }

    bool answer = false;
    mutable int questions = 0;
};

SocketState StateWithNumber(unsigned int number) {
    return static_cast<SocketState>(number);
}

TEST_F(SocketStatus, OnlyAnOpenStateAndAHandleMakeASocketValid) {
    for (const SocketState state : AllStates) {
        const SocketImpl withoutHandle(Winsock::InvalidSocket, state);
        EXPECT_FALSE(withoutHandle.IsValid()) << state;
        const auto socket = MakeSocket(state);
        EXPECT_EQ(socket->IsValid(), state != STATE_CLOSED) << state;
        EXPECT_EQ(Transcript(), Lines()) << state;
        if (state == STATE_CLOSED) socket->Close();
    }
}

TEST_F(SocketStatus, HandlesZeroAndAllOnesIn32BitsAreValid) {
    for (const Winsock::Handle handle : {0ULL, 0xFFFFFFFFULL, 0xFFFFFFFFFFFFFFFEULL}) {
        const VelBase::ReturnPtrI<SocketImpl> socket = new SocketImpl(handle, STATE_CREATED);
        EXPECT_TRUE(socket->IsValid()) << handle;
    }
}

TEST_F(SocketStatus, ClosedSocketIsNotValid) {
    const auto socket = MakeConnectedSocket();
    EXPECT_TRUE(socket->IsValid());
    socket->Close();
    EXPECT_FALSE(socket->IsValid());
}

TEST_F(SocketStatus, SocketsWithTheSameHandleAreTheSame) {
    const auto socket = MakeConnectedSocket();
    SocketImpl sameHandle(socket->Handle(), STATE_CLOSED);
    EXPECT_TRUE(socket->IsSameSocket(sameHandle));
    EXPECT_TRUE(sameHandle.IsSameSocket(*socket));
    EXPECT_TRUE(socket->IsSameSocket(*socket));
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SocketStatus, SocketsWithOtherHandlesAreNotTheSame) {
    const auto one = MakeSocket();
    const auto other = MakeSocket();
    EXPECT_FALSE(one->IsSameSocket(*other));
    EXPECT_FALSE(other->IsSameSocket(*one));
    EXPECT_FALSE(one->IsSameSocket(*MakeClosedSocket()));
    EXPECT_FALSE(MakeClosedSocket()->IsSameSocket(*one));
}

TEST_F(SocketStatus, HandlesAreComparedInAllTheirBits) {
    const SocketImpl low(0x00000001'00000007ULL, STATE_CLOSED);
    const SocketImpl high(0x00000002'00000007ULL, STATE_CLOSED);
    EXPECT_FALSE(low.IsSameSocket(high));
    EXPECT_FALSE(high.IsSameSocket(low));
}

TEST_F(SocketStatus, ClosedSocketsAreAllTheSame) {
    const auto once = MakeConnectedSocket();
    once->Close();
    EXPECT_TRUE(once->IsSameSocket(*MakeClosedSocket()));
    EXPECT_TRUE(MakeClosedSocket()->IsSameSocket(*once));
}

TEST_F(SocketStatus, DataAreAvailableWhenTheSystemCountsAny) {
    const auto socket = MakeConnectedSocket();
    for (const unsigned int count : {0U, 1U, 512U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        ClearTranscript();
        On::Ioctlsocket().Returns(count);
        EXPECT_EQ(socket->IsDataAvailable(), count != 0) << count;
        EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x4004667F)"}) << count;
    }
}

TEST_F(SocketStatus, FailedQuestionForDataIsAnsweredWithNoneInSilence) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Ioctlsocket().Fails(error);
        EXPECT_FALSE(socket->IsDataAvailable()) << error;
        EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x4004667F)"}) << error;
        EXPECT_EQ(FieldsOf(*socket), before) << error;
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SocketStatus, DataAreAskedForInEveryState) {
    for (const SocketState state : AllStates) {
        const auto socket = MakeSocket(state);
        On::Ioctlsocket().Returns(3);
        EXPECT_TRUE(socket->IsDataAvailable()) << state;
        socket->Close();
    }
}

TEST_F(SocketStatus, OfConnectedSocketDependsOnDataAndAsksOnce) {
    const auto socket = MakeConnectedSocket();
    On::Ioctlsocket().Returns(1).Returns(0).Fails(10054);
    EXPECT_EQ(socket->GetStatus(), 2);
    EXPECT_EQ(socket->GetStatus(), 3);
    EXPECT_EQ(socket->GetStatus(), 3);
    EXPECT_EQ(Transcript(), Lines(3, "ioctlsocket(1001, 0x4004667F)"));
}

TEST_F(SocketStatus, OfConnectedSocketIsIdleWhateverTheFailedQuestionsNumber) {
    const auto socket = MakeConnectedSocket();
    const SocketFields before = FieldsOf(*socket);
    for (const int error : ErrorNumbers()) {
        On::Ioctlsocket().Fails(error);
        EXPECT_EQ(socket->GetStatus(), 3) << error;
    }
    EXPECT_EQ(FieldsOf(*socket), before);
    ExpectRecords({});
}

TEST_F(SocketStatus, OfOtherStatesAsksNothing) {
    for (const SocketState state : {STATE_CREATED, STATE_BOUND, StateWithNumber(5),
                                    StateWithNumber(0x80000000U), StateWithNumber(0xFFFFFFFFU)}) {
        const auto socket = MakeSocket(state);
        EXPECT_EQ(socket->GetStatus(), 0) << state;
        EXPECT_EQ(Transcript(), Lines()) << state;
    }
    EXPECT_EQ(MakeSocket(STATE_LISTENING)->GetStatus(), 1);
    EXPECT_EQ(CountOf("ioctlsocket"), 0);
}

TEST_F(SocketStatus, OfClosedSocketIsNoneAndAsksNothing) {
    const auto socket = MakeConnectedSocket();
    socket->Close();
    ClearTranscript();
    EXPECT_EQ(socket->GetStatus(), 0);
    EXPECT_EQ(MakeClosedSocket()->GetStatus(), 0);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SocketStatus, HonoursAnOverrideOfTheQuestionForData) {
    const auto socket = MakeConnectedSocket<OwnAnswer>();
    EXPECT_EQ(socket->GetStatus(), 3);
    socket->answer = true;
    EXPECT_EQ(socket->GetStatus(), 2);
    EXPECT_EQ(socket->questions, 2);
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(SocketStatus, OverrideIsAskedOnlyWhenConnected) {
    for (const SocketState state : {STATE_CREATED, STATE_BOUND, STATE_LISTENING}) {
        const auto socket = MakeSocket<OwnAnswer>(state);
        socket->answer = true;
        socket->GetStatus();
        EXPECT_EQ(socket->questions, 0) << state;
    }
}

TEST_F(SocketStatus, QueriesNeedNoMemory) {
    const auto socket = MakeConnectedSocket();
    const auto other = MakeSocket();
    const Allocations::Mark mark;
    socket->IsValid();
    socket->IsSameSocket(*other);
    socket->IsDataAvailable();
    socket->GetStatus();
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(SocketStatus, QueriesWorkWhileTheLayerIsDown) {
    SocketImpl socket(7, STATE_CONNECTED);
    BringLayerDown();
    On::Ioctlsocket().Returns(1).Fails(10093);
    EXPECT_TRUE(socket.IsValid());
    EXPECT_TRUE(socket.IsSameSocket(socket));
    EXPECT_TRUE(socket.IsDataAvailable());
    EXPECT_EQ(socket.GetStatus(), 3);
}

}  // namespace
}  // namespace SocketTests
