// What a process has of the system's things, to be compared before and after. Takes no memory.
#pragma once

#include <string>

namespace Support {

class ProcessState {
public:
    // The descriptors that are looked at are the lowest ones, and those from here on: above
    // FD_SETSIZE, by far.
    static constexpr int HighDescriptors = 5'000;

    static ProcessState Now();

    // What differs: names, each after a blank; empty if nothing does. The module makes its only
    // thread key when it first needs one.
    std::string DifferenceTo(const ProcessState& later, bool mayHaveMadeKey = true) const;

private:
    static constexpr int OfEach = 64;
    static int DescriptorAt(int place) noexcept;

    bool open_[2 * OfEach] = {};
    long threads_ = 0;
    unsigned int nextKey_ = 0;
    unsigned long long blockedSignals_ = 0;
    bool isCancellable_ = true;
};

}  // namespace Support
