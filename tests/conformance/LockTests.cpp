#include <Platform/System.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

namespace Conformance {
namespace {

constinit System::Lock g_lock = {};

// Whoever is inside gives way, so that others come in if they can.
TEST(Lock, LetsInOneThreadAtATime) {
    constexpr int threadCount = 4;
    constexpr int times = 2'000;
    std::atomic<int> missing = threadCount;
    std::atomic<int> inside = 0;
    std::atomic<int> meetings = 0;
    int count = 0;
    const auto work = [&] {
        --missing;
        while (missing != 0)
            std::this_thread::yield();
        for (int time = 0; time < times; ++time) {
            const std::lock_guard guard(g_lock);
            if (++inside != 1) ++meetings;
            ++count;
            std::this_thread::yield();
            --inside;
        }
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back(work);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(meetings, 0);
    EXPECT_EQ(count, threadCount * times);
}

}  // namespace
}  // namespace Conformance
