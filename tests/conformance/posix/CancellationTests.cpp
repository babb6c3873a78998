// Requests to cancel a thread that are held back.
#include <Platform/System.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <pthread.h>

#include <functional>
#include <string>
#include <utility>

#include "BoundGroupScene.h"
#include "conformance/DatagramScene.h"
#include "conformance/NameScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/WaitingCall.h"

namespace Conformance {
namespace {

struct HeldCancellation {
    bool cameBehindTheFirstPoint = false;
    bool cameBehindTheLastPoint = false;

    // A thread's function.
    static void* Run(void* argument) {
        auto& scene = *static_cast<HeldCancellation*>(argument);
        const int held = System::HoldCancellation();
        ::pthread_cancel(::pthread_self());
        ::pthread_testcancel();
        scene.cameBehindTheFirstPoint = true;
        System::ReleaseCancellation(held);
        ::pthread_testcancel();
        scene.cameBehindTheLastPoint = true;
        return nullptr;
    }
};

TEST(Cancellation, WaitsForAsLongAsItIsHeld) {
    HeldCancellation scene;
    pthread_t thread = {};
    ASSERT_EQ(::pthread_create(&thread, nullptr, HeldCancellation::Run, &scene), 0);
    void* end = nullptr;
    ASSERT_EQ(::pthread_join(thread, &end), 0);
    EXPECT_EQ(end, PTHREAD_CANCELED);
    EXPECT_TRUE(scene.cameBehindTheFirstPoint);
    EXPECT_FALSE(scene.cameBehindTheLastPoint);
}

TEST(Cancellation, HeldTwiceIsStillHeldAfterTheInnerRelease) {
    const int outer = System::HoldCancellation();
    System::ReleaseCancellation(System::HoldCancellation());
    int state = PTHREAD_CANCEL_ENABLE;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    EXPECT_EQ(state, PTHREAD_CANCEL_DISABLE);
    System::ReleaseCancellation(outer);
    ::pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &state);
    EXPECT_EQ(state, PTHREAD_CANCEL_ENABLE);
}

// A call in a thread that somebody wants to cancel.
class WantedThread {
public:
    explicit WantedThread(std::function<void()> call) : call_(std::move(call)) {}

    // That the call ends as if nobody wanted it, and the thread only then.
    void ExpectToEndItsCall() {
        pthread_t thread = {};
        ASSERT_EQ(::pthread_create(&thread, nullptr, Run, this), 0);
        void* end = nullptr;
        ASSERT_EQ(::pthread_join(thread, &end), 0);
        EXPECT_EQ(end, PTHREAD_CANCELED);
        EXPECT_TRUE(ended_);
    }

private:
    static void* Run(void* argument) {
        auto& thread = *static_cast<WantedThread*>(argument);
        ::pthread_cancel(::pthread_self());
        thread.call_();
        thread.ended_ = true;
        ::pthread_testcancel();
        return nullptr;
    }

    std::function<void()> call_;
    bool ended_ = false;
};

void ExpectToEnd(std::function<void()> call) {
    WantedThread(std::move(call)).ExpectToEndItsCall();
}

using CancellationDuring = BoundGroup;

TEST_F(CancellationDuring, AQuestionToSeveralQueuesWaitsForItsEnd) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("to all");
    SendToAddress("to one");
    ExpectToEnd([&] { EXPECT_EQ(BytesAvailable(receiver_), 6U); });
}

TEST_F(CancellationDuring, AJoinWaitsForItsEnd) {
    const OwnedSocket socket = NewBoundIpv6Datagram();
    const Winsock::MembershipIpv6 group = {
        {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x47, 0x11}, ::if_nametoindex("lo")};
    ExpectToEnd([&] { EXPECT_TRUE(Succeeds(SetMembership(socket, Join, group))); });
    EXPECT_TRUE(Succeeds(SetMembership(socket, Leave, group)));
}

TEST_F(CancellationDuring, TheEndOfAFailedConnectWaitsForIt) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(bound))));
    AwaitEnd(socket.Get());
    ExpectToEnd([&] {
        Winsock::AddressIpv4 address = {};
        int length = sizeof address;
        EXPECT_TRUE(FailsWith(10057, Winsock::getpeername(socket.Get(), &address, &length)));
    });
    EXPECT_EQ(ReadyFor(socket), "e");
}

TEST_F(CancellationDuring, AClosingThatEndsACallWaitsForItsEnd) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Take();
    Support::WaitingCall<int> receiving([handle] {
        char byte = 0;
        return Winsock::recv(handle, &byte, 1, 0);
    });
    ExpectToEnd([&] { EXPECT_TRUE(Succeeds(Winsock::closesocket(handle))); });
    EXPECT_EQ(receiving.Finish(), Winsock::SocketError);
}

using CancellationInside = Started;

// The table is read once more for another spelling.
TEST_F(CancellationInside, AQuestionForAServiceWaitsForItsEnd) {
    ExpectToEnd([] {
        List list;
        EXPECT_TRUE(Returns(0, Resolve("127.0.0.1", "HTTP", list)));
    });
}

// The thread ends in the call, which then uses the socket no more.
TEST_F(CancellationInside, AReceiveLeavesTheSocketToBeClosed) {
    for (const unsigned int timeout : {0U, 60'000U}) {
        Pair pair = NewConnectedPair();
        ASSERT_TRUE(Succeeds(SetOption(pair.client, Winsock::OptionReceiveTimeout, timeout)));
        const Winsock::Handle handle = pair.client.Take();
        pthread_t thread = {};
        ASSERT_EQ(::pthread_create(
                      &thread, nullptr,
                      [](void* argument) -> void* {
                          char byte = 0;
                          Winsock::recv(*static_cast<const Winsock::Handle*>(argument), &byte, 1,
                                        0);
                          return nullptr;
                      },
                      const_cast<Winsock::Handle*>(&handle)),
                  0);
        ::pthread_cancel(thread);
        void* end = nullptr;
        ASSERT_EQ(::pthread_join(thread, &end), 0);
        EXPECT_EQ(end, PTHREAD_CANCELED);
        EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
        EXPECT_LT(::fcntl(static_cast<int>(handle), F_GETFD), 0);
    }
}

}  // namespace
}  // namespace Conformance
