// What a process has of the system's things, to be compared before and after. Takes no memory.
#pragma once

#include <string>

namespace Support {

class ProcessState {
public:
    static ProcessState Now();

    // What differs: names, each after a blank; empty if nothing does. A module makes its thread key
    // when it first needs one.
    std::string DifferenceTo(const ProcessState& later, bool withKeys) const;

private:
    static constexpr int MostDescriptors = 64;

    bool open_[MostDescriptors] = {};
    long threads_ = 0;
    unsigned int nextKey_ = 0;
    unsigned long long blockedSignals_ = 0;
    bool isCancellable_ = true;
};

}  // namespace Support
