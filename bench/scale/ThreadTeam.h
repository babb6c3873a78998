// Threads that do the same at the same time.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <thread>
#include <vector>

namespace Bench {

// They wait for their turns by sleeping for moments, never by a lock: whatever waits for a lock
// while they work waits for somebody else's.
class ThreadTeam {
public:
    // task gets the number of its thread, from 0.
    ThreadTeam(int threads, std::function<void(std::size_t)> task);
    ~ThreadTeam();
    ThreadTeam(const ThreadTeam&) = delete;
    ThreadTeam& operator=(const ThreadTeam&) = delete;

    // Every thread does its task once. False when one of them threw.
    bool DoTask();

private:
    void Work(std::size_t number);
    void DoOneTask(std::size_t number) noexcept;

    std::function<void(std::size_t)> task_;
    std::atomic<int> turn_ = 0;
    std::atomic<int> working_ = 0;
    std::atomic<bool> isOver_ = false;
    std::atomic<bool> hasFailed_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace Bench
