#include "Conversation.h"

namespace VelSockTrace {

namespace {

// The lower bound of Linux; other systems begin above it.
constexpr std::uint16_t FirstEphemeralPort = 32768;

bool IsEphemeral(const Endpoint& end) noexcept {
    return end.port >= FirstEphemeralPort;
}

}  // namespace

Outcome OutcomeOf(const Conversation& conversation) noexcept {
    if (conversation.isRefused) return Outcome::NotConnected;
    if (conversation.loss != 0) return Outcome::Failed;
    if (conversation.isDatagrams) return Outcome::Unknown;
    if (conversation.HasEnded()) return Outcome::Orderly;
    const bool isKnown = conversation.HasConnected() && !conversation.isForgotten;
    return isKnown ? Outcome::Open : Outcome::Unknown;
}

std::size_t ClientOf(const Conversation& conversation) noexcept {
    if (conversation.client) return *conversation.client;
    const auto& [first, second] = conversation.ends;
    if (first.port == 0 || second.port == 0) return second.port != 0 ? 0 : 1;
    if (IsEphemeral(first) != IsEphemeral(second)) return IsEphemeral(first) ? 0 : 1;
    return conversation.firstSender.value_or(0);
}

}  // namespace VelSockTrace
