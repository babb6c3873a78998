// How far a long transfer is, on one line of a terminal that is written anew again and again.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "Arguments.h"
#include "Traffic.h"

namespace VelSockCat {

// Shows nothing unless standard error is a terminal, where neither a user types nor bytes of the
// peer appear, nor records or events. Nothing else may be written there while it lives.
class ProgressLine {
public:
    // Reads the traffic from a thread of its own.
    ProgressLine(const Traffic& traffic, const Arguments& arguments);
    ~ProgressLine();
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    // Clears the line for good.
    void Stop() noexcept;

private:
    void Run();
    bool Await(std::chrono::milliseconds time);
    std::string LineFor(const Totals& totals) const;

    const Traffic& traffic_;
    const std::optional<unsigned long long> size_;  // of the input, if it is known
    const bool outputIsTerminal_;
    std::mutex mutex_;
    std::condition_variable stopping_;
    bool stops_ = false;
    std::thread thread_;
};

}  // namespace VelSockCat
