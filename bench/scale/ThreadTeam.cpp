#include "ThreadTeam.h"

#include <chrono>
#include <utility>

namespace Bench {
namespace {

void SleepForAMoment() {
    std::this_thread::sleep_for(std::chrono::microseconds(200));
}

}  // namespace

ThreadTeam::ThreadTeam(int threads, std::function<void(std::size_t)> task)
    : task_(std::move(task)) {
    for (int number = 0; number < threads; ++number)
        threads_.emplace_back([this, number] { Work(static_cast<std::size_t>(number)); });
}

ThreadTeam::~ThreadTeam() {
    isOver_ = true;
    for (std::thread& thread : threads_)
        thread.join();
}

bool ThreadTeam::DoTask() {
    working_ = static_cast<int>(threads_.size());
    ++turn_;
    while (working_ > 0)
        SleepForAMoment();
    return !hasFailed_;
}

void ThreadTeam::Work(std::size_t number) {
    for (int done = 0; !isOver_;) {
        if (turn_ == done) {
            SleepForAMoment();
            continue;
        }
        ++done;
        DoOneTask(number);
        --working_;
    }
}

void ThreadTeam::DoOneTask(std::size_t number) noexcept {
    try {
        task_(number);
    } catch (...) {
        hasFailed_ = true;
    }
}

}  // namespace Bench
