#include "support/Threads.h"

#include <unistd.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace Support {

unsigned long CurrentThread() {
    return static_cast<unsigned long>(::gettid());
}

// A thread that rests for a moment only, to get a lock, say, rests no three times in a row.
void AwaitWaiting(unsigned long thread) {
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/stat";
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    for (int rests = 0; rests < 3;) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::string state;
        if (!(std::ifstream(path).ignore(1000, ')') >> state)) return;
        rests = state == "S" ? rests + 1 : 0;
        if (std::chrono::steady_clock::now() > end) throw std::runtime_error("no thread waits");
    }
}

}  // namespace Support
