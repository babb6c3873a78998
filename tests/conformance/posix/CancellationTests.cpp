// Requests to cancel a thread that are held back.
#include <Platform/System.h>
#include <gtest/gtest.h>
#include <pthread.h>

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

}  // namespace
}  // namespace Conformance
