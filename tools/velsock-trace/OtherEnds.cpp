#include "OtherEnds.h"

#include <cstdlib>

namespace VelSockTrace {

namespace {

constexpr std::int64_t MostBetweenStarts = 2'000'000;  // microseconds

// The first number is what the local end has sent.
std::uint64_t KeyOf(std::uint64_t sent, std::uint64_t received) noexcept {
    return sent * 0x9E37'79B9'7F4A'7C15U ^ received;
}

bool IsEligible(const Conversation& conversation) noexcept {
    return !conversation.isDatagrams && !conversation.sides[1].isLogged &&
           conversation.flows[0].Bytes() + conversation.flows[1].Bytes() > 0;
}

std::int64_t Between(const Conversation& one, const Conversation& other) noexcept {
    return std::abs(one.start - other.start);
}

bool MayBeOtherEnd(const Conversation& one, const Conversation& other) noexcept {
    return one.sides[0].log != other.sides[0].log && IsEligible(other) &&
           one.flows[0].Bytes() == other.flows[1].Bytes() &&
           one.flows[1].Bytes() == other.flows[0].Bytes() &&
           Between(one, other) <= MostBetweenStarts && MayBeSame(one.ends[0], other.ends[1]) &&
           MayBeSame(one.ends[1], other.ends[0]) &&
           (HaveInCommon(one.ends[0], other.ends[1]) || HaveInCommon(one.ends[1], other.ends[0]));
}

}  // namespace

void OtherEnds::Add(Tracked& conversation) {
    if (!IsEligible(conversation)) return;
    byBytes_.emplace(KeyOf(conversation.flows[0].Bytes(), conversation.flows[1].Bytes()),
                     &conversation);
}

void OtherEnds::Remove(const Tracked& conversation) {
    const auto [begin, end] =
        byBytes_.equal_range(KeyOf(conversation.flows[0].Bytes(), conversation.flows[1].Bytes()));
    for (auto entry = begin; entry != end; ++entry) {
        if (entry->second != &conversation) continue;
        byBytes_.erase(entry);
        return;
    }
}

Tracked* OtherEnds::Of(const Tracked& conversation) const noexcept {
    if (!IsEligible(conversation)) return nullptr;
    const auto [begin, end] =
        byBytes_.equal_range(KeyOf(conversation.flows[1].Bytes(), conversation.flows[0].Bytes()));
    Tracked* nearest = nullptr;
    for (auto entry = begin; entry != end; ++entry) {
        Tracked& other = *entry->second;
        if (!MayBeOtherEnd(conversation, other)) continue;
        if (nearest == nullptr || Between(conversation, other) < Between(conversation, *nearest))
            nearest = &other;
    }
    return nearest;
}

}  // namespace VelSockTrace
