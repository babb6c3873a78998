// Finds the two ends of one conversation among those whose records do not tell both ends in full.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "Tracked.h"

namespace VelSockTrace {

// Extended sockets record the computer's name in place of their own address, and often no port. Two
// conversations in different logs are taken for the ends of one if each has received as many bytes
// as the other has sent, they began at nearly the same time, what is known of their ends agrees,
// and some of it is known of both. Of several, the one is taken that began nearest.
class OtherEnds {
public:
    void Add(Tracked& conversation);
    void Remove(const Tracked& conversation);

    // Returns null if there is none.
    Tracked* Of(const Tracked& conversation) const noexcept;

private:
    std::unordered_multimap<std::uint64_t, Tracked*> byBytes_;
};

}  // namespace VelSockTrace
