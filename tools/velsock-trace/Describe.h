// Conversations in words.
#pragma once

#include <string>

#include "Conversation.h"

namespace VelSockTrace {

// "Connection reset by peer (10054 SOCKET_ERR_CONNRESET)" for the system's number.
std::string ErrorText(int number);
// "SOCKET_ERR_CONNRESET"
const char* ErrorSymbol(int number) noexcept;

// "orderly", "failed: Connection reset by peer (10054 SOCKET_ERR_CONNRESET)"
std::string OutcomeText(const Conversation& conversation);

std::string SecondsText(std::int64_t microseconds);

}  // namespace VelSockTrace
