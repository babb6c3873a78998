// What an extended socket tells about itself, and what it does not support.
#include <algorithm>
#include <functional>
#include <utility>

#include "XtFixture.h"
#include "support/ForeignSocket.h"

namespace SocketTests {
namespace {

class XtBasics : public XtTest {};

// Answers the question for data itself and counts how often it is asked.
class OwnAnswer : public SocketXtImpl {
public:
    using SocketXtImpl::SocketXtImpl;
    bool IsDataAvailable() const override {
        ++questions;
        return answer;
    }

    bool answer = false;
    mutable int questions = 0;
};

TEST_F(XtBasics, SocketKeepsWhatItWasMadeOfAndHasNoTexts) {
    for (const SocketState state : AllStates) {
        const SocketXtImpl socket(Winsock::InvalidSocket, state, 7, -8, SocketXt::FAMILY_IPV6);
        EXPECT_EQ(FieldsOf(socket), (XtFields{Winsock::InvalidSocket, state, "", "", "", "", 7, -8,
                                              SocketXt::FAMILY_IPV6}));
        EXPECT_EQ(socket.GetReferenceCount(), 0);
    }
    EXPECT_EQ(Transcript(), Lines{});
}

// What is copied is the implementation's own; its copy is counted by itself.
TEST_F(XtBasics, CopiedInterfaceTouchesNoSystemAndSharesNoCount) {
    Support::ForeignSocketXt original;
    original.AddRef();
    original.dataAvailable = true;
    Support::ForeignSocketXt copy(original);
    EXPECT_TRUE(copy.dataAvailable);
    copy.AddRef();
    const Support::ForeignSocketXt moved(std::move(copy));
    EXPECT_EQ(moved.GetReferenceCount(), 0);
    EXPECT_TRUE(moved.dataAvailable);
    EXPECT_EQ(original.GetReferenceCount(), 1);
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(XtBasics, AssignedInterfaceLeavesTheSocketWhatItIs) {
    SocketXtImpl target(7, STATE_CREATED, 1, 6, SocketXt::FAMILY_IPV6);
    SocketXtImpl source(Winsock::InvalidSocket, STATE_CLOSED, 2, 17, SocketXt::FAMILY_IPV4);
    SocketXt& assigned = target;
    EXPECT_EQ(&(assigned = static_cast<const SocketXt&>(source)), &assigned);
    EXPECT_EQ(&(assigned = static_cast<SocketXt&&>(source)), &assigned);
    EXPECT_EQ(FieldsOf(target),
              (XtFields{7, STATE_CREATED, "", "", "", "", 1, 6, SocketXt::FAMILY_IPV6}));
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(XtBasics, FieldsStandInTheirOrder) {
    const auto socket = MakeXt();
    const std::vector<const void*> addresses = FieldAddressesOf(*socket);
    EXPECT_TRUE(std::is_sorted(addresses.begin(), addresses.end(), std::less<const void*>()));
}

TEST_F(XtBasics, HandleAndFamilyAreToldInEveryState) {
    for (const Winsock::Handle handle : {0ULL, 7ULL, 0xFFFFFFFFULL, 0x123456789ABCULL}) {
        const auto family = static_cast<SocketXt::ADDR_FAMILY>(handle % 3);
        const SocketXtImpl socket(handle, STATE_CLOSED, 1, 6, family);
        EXPECT_EQ(socket.GetHandle(), handle);
        EXPECT_EQ(socket.GetAddressFamily(), family);
    }
    const auto socket = MakeXt();
    socket->Close();
    EXPECT_EQ(socket->GetHandle(), Winsock::InvalidSocket);
}

TEST_F(XtBasics, OnlyAnOpenStateAndAHandleMakeASocketValid) {
    for (const SocketState state : AllStates) {
        const SocketXtImpl withoutHandle(Winsock::InvalidSocket, state, 1, 6,
                                         SocketXt::FAMILY_IPV4);
        EXPECT_FALSE(withoutHandle.IsValid()) << state;
        const auto socket = MakeXt(state);
        EXPECT_EQ(socket->IsValid(), state != STATE_CLOSED) << state;
        EXPECT_EQ(Transcript(), Lines{}) << state;
        if (state == STATE_CLOSED) socket->Close();
    }
}

TEST_F(XtBasics, SocketsWithTheSameHandleAreTheSame) {
    const auto socket = MakeXt();
    const SocketXtImpl sameHandle(socket->GetHandle(), STATE_CLOSED, 2, 17, SocketXt::FAMILY_IPV6);
    EXPECT_TRUE(socket->IsSameSocket(sameHandle));
    EXPECT_TRUE(sameHandle.IsSameSocket(*socket));
    EXPECT_TRUE(socket->IsSameSocket(*socket));
    EXPECT_FALSE(socket->IsSameSocket(*MakeClosedXt()));
    EXPECT_TRUE(MakeClosedXt()->IsSameSocket(*MakeClosedXt()));
    EXPECT_EQ(Transcript(), Lines{});
    EXPECT_FALSE(socket->IsSameSocket(*MakeXt()));
}

TEST_F(XtBasics, HandlesAreComparedInAllTheirBits) {
    const SocketXtImpl low(0x00000001'00000007ULL, STATE_CLOSED, 1, 6, SocketXt::FAMILY_IPV4);
    const SocketXtImpl high(0x00000002'00000007ULL, STATE_CLOSED, 1, 6, SocketXt::FAMILY_IPV4);
    EXPECT_FALSE(low.IsSameSocket(high));
    EXPECT_FALSE(high.IsSameSocket(low));
}

TEST_F(XtBasics, ClassicSocketWithTheSameHandleIsTheSame) {
    const auto socket = MakeXt();
    const SocketImpl classic(socket->GetHandle(), STATE_CLOSED);
    EXPECT_TRUE(socket->IsSameSocket(classic));
    EXPECT_TRUE(classic.IsSameSocket(*socket));
    EXPECT_FALSE(socket->IsSameSocket(*MakeSocket()));
}

TEST_F(XtBasics, NonBlockingIsOneCallAndItsAnswer) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    EXPECT_TRUE(socket->SetNonBlocking());
    EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x8004667E, 1)"});
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Ioctlsocket().Fails(error);
        EXPECT_FALSE(socket->SetNonBlocking()) << error;
        EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x8004667E, 1)"}) << error;
    }
    EXPECT_EQ(FieldsOf(*socket), before);
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtBasics, DataAreAvailableWhenTheSystemCountsAny) {
    const auto socket = MakeXt();
    for (const unsigned int count : {0U, 1U, 512U, 0x10000U, 0x80000000U, 0xFFFFFFFFU}) {
        ClearTranscript();
        On::Ioctlsocket().Returns(count);
        EXPECT_EQ(socket->IsDataAvailable(), count != 0) << count;
        EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x4004667F)"}) << count;
    }
}

TEST_F(XtBasics, FailedQuestionForDataIsAnsweredWithNoneInSilence) {
    const auto socket = MakeXt();
    for (const int error : ErrorNumbers()) {
        ClearTranscript();
        On::Ioctlsocket().Fails(error);
        EXPECT_FALSE(socket->IsDataAvailable()) << error;
        EXPECT_EQ(Transcript(), Lines{"ioctlsocket(1001, 0x4004667F)"}) << error;
    }
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(XtBasics, StatusOfConnectedSocketDependsOnDataAndAsksOnce) {
    const auto socket = MakeXt(STATE_CONNECTED);
    On::Ioctlsocket().Returns(1).Returns(0).Fails(10054);
    EXPECT_EQ(socket->GetStatus(), 2);
    EXPECT_EQ(socket->GetStatus(), 3);
    EXPECT_EQ(socket->GetStatus(), 3);
    EXPECT_EQ(Transcript(), Lines(3, "ioctlsocket(1001, 0x4004667F)"));
}

TEST_F(XtBasics, StatusOfOtherStatesAsksNothing) {
    for (const SocketState state : {STATE_CREATED, STATE_BOUND, static_cast<SocketState>(5)})
        EXPECT_EQ(MakeXt(state)->GetStatus(), 0) << state;
    EXPECT_EQ(MakeXt(STATE_LISTENING)->GetStatus(), 1);
    EXPECT_EQ(MakeClosedXt()->GetStatus(), 0);
    EXPECT_EQ(CountOf("ioctlsocket"), 0);
}

TEST_F(XtBasics, StatusHonoursAnOverrideOfTheQuestionForData) {
    const auto socket = MakeXt<OwnAnswer>(STATE_CONNECTED);
    EXPECT_EQ(socket->GetStatus(), 3);
    socket->answer = true;
    EXPECT_EQ(socket->GetStatus(), 2);
    EXPECT_EQ(socket->questions, 2);
    EXPECT_EQ(MakeXt<OwnAnswer>(STATE_LISTENING)->GetStatus(), 1);
    EXPECT_EQ(CountOf("ioctlsocket"), 0);
}

TEST_F(XtBasics, OperationsByOctetsDoNothing) {
    for (const SocketState state : AllStates) {
        SCOPED_TRACE(state);
        const auto socket = MakeXt(state);
        StoreTexts(*socket);
        const XtFields before = FieldsOf(*socket);
        SocketAddress remote(Octets(9, 8, 7, 6), 54);
        socket->Bind(Octets(10, 0, 0, 1), 80);
        socket->Connect(Octets(10, 0, 0, 1), 80);
        EXPECT_FALSE(socket->Accept(remote));
        EXPECT_EQ(EndpointText(remote), "9.8.7.6:54");
        EXPECT_EQ(EndpointText(socket->GetLocalAddress()), "0.0.0.0:0");
        EXPECT_EQ(EndpointText(socket->GetRemoteAddress()), "0.0.0.0:0");
        EXPECT_EQ(FieldsOf(*socket), before);
        EXPECT_EQ(Transcript(), Lines{});
        if (state == STATE_CLOSED) socket->Close();
    }
}

TEST_F(XtBasics, UnsupportedOperationsWorkThroughTheClassicInterface) {
    const auto socket = MakeXt();
    Socket& classic = *socket;
    SocketAddress remote(Octets(9, 8, 7, 6), 54);
    classic.Bind(Octets(10, 0, 0, 1), 80);
    classic.Connect(Octets(10, 0, 0, 1), 80);
    EXPECT_FALSE(classic.Accept(remote));
    EXPECT_EQ(Transcript(), Lines{});
    ExpectRecords({});
}

TEST_F(XtBasics, QueriesNeedNoMemory) {
    const auto socket = MakeXt(STATE_CONNECTED);
    const auto other = MakeXt();
    const Allocations::Mark mark;
    socket->IsValid();
    socket->IsSameSocket(*other);
    socket->IsDataAvailable();
    socket->GetStatus();
    socket->GetHandle();
    socket->GetAddressFamily();
    socket->SetNonBlocking();
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(XtBasics, QueriesWorkWhileTheLayerIsDown) {
    const auto socket = MakeXt(STATE_CONNECTED);
    BringLayerDown();
    On::Ioctlsocket().Returns(1).Fails(10093);
    EXPECT_TRUE(socket->IsValid());
    EXPECT_EQ(socket->GetStatus(), 2);
    EXPECT_FALSE(socket->SetNonBlocking());
}

}  // namespace
}  // namespace SocketTests
