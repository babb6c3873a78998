#include <Platform/System.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace Conformance {
namespace {

constinit System::Lock g_lock = {};

TEST(Lock, LetsInOneThreadAtATime) {
    constexpr int times = 20'000;
    int count = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            for (int time = 0; time < times; ++time) {
                g_lock.lock();
                ++count;
                g_lock.unlock();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(count, 4 * times);
}

}  // namespace
}  // namespace Conformance
