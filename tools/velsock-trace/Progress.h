// How far the logs have been read, on a terminal.
#pragma once

#include <chrono>

#include "Logs.h"

namespace VelSockTrace {

class Progress {
public:
    explicit Progress(const Logs& logs);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // After each record; looks at the clock now and then.
    void Step() {
        if (isShown_ && ++steps_ % 4096 == 0) Show();
    }

private:
    using Clock = std::chrono::steady_clock;

    void Show();

    const Logs& logs_;
    bool isShown_;
    bool hasShown_ = false;
    unsigned int steps_ = 0;
    Clock::time_point begin_ = Clock::now();
    Clock::time_point shown_ = begin_;
};

}  // namespace VelSockTrace
