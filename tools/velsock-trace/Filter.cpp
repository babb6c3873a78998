#include "Filter.h"

#include <algorithm>
#include <array>

namespace VelSockTrace {

namespace {

constexpr std::array<const char*, 5> OutcomeNames{"orderly", "failed", "refused", "open",
                                                  "unknown"};

bool HasAddress(const Endpoint& end, const Endpoint& wanted) noexcept {
    return wanted.address.version != 0 ? end.address == wanted.address : end.host == wanted.host;
}

}  // namespace

const char* NameOf(Outcome outcome) noexcept {
    return OutcomeNames[static_cast<std::size_t>(outcome)];
}

bool AddKind(Filter& filter, const std::string& name) {
    if (name == "stream") return filter.streams = true;
    if (name == "datagrams") return filter.datagrams = true;
    const auto* const found = std::find(OutcomeNames.begin(), OutcomeNames.end(), name);
    if (found == OutcomeNames.end()) return false;
    filter.outcomes.push_back(static_cast<Outcome>(found - OutcomeNames.begin()));
    return true;
}

bool Filter::Passes(const Conversation& conversation) const noexcept {
    const auto& ends = conversation.ends;
    const auto hasAddress = [&](const Endpoint& end) { return HasAddress(end, *address); };
    const auto hasPort = [&](const Endpoint& end) { return end.port == port; };
    if (address && std::none_of(ends.begin(), ends.end(), hasAddress)) return false;
    if (port != 0 && std::none_of(ends.begin(), ends.end(), hasPort)) return false;
    if (from && conversation.last < *from) return false;
    if (to && conversation.start > *to) return false;
    if ((streams || datagrams) && !(conversation.isDatagrams ? datagrams : streams)) return false;
    return outcomes.empty() ||
           std::find(outcomes.begin(), outcomes.end(), OutcomeOf(conversation)) != outcomes.end();
}

}  // namespace VelSockTrace
