// Reads logs from beginning to end.
#pragma once

#include <cstdint>
#include <map>

#include "Arguments.h"
#include "Conversations.h"
#include "Logs.h"
#include "Playback.h"

namespace VelSockTrace {

// Passes all records to the conversations, and forgets these at the end. Shows progress if standard
// error is a terminal. Returns how many failures belong to no conversation. Throws Failure with
// LocalFailure.
std::uint64_t ReadAll(Logs& logs, Conversations& conversations);

// The conversations that are wanted, in the order in which they begin, with all that is known of
// each at its end.
struct Survey {
    std::map<unsigned int, Conversation> wanted;
    Joints joints;
};

// Reads the logs once, and tells which lines could not be understood. Throws Failure with
// LocalFailure, or with NothingFound if no conversation is wanted.
Survey ReadSurvey(const Arguments& arguments);

// Reads the logs again and plays the conversations. Throws Failure with LocalFailure.
void Play(const Arguments& arguments, const Survey& survey, Player& player);

// Tells on standard error which lines could not be understood.
void TellFaults(const Faults& faults, std::uint64_t strayFailures);

}  // namespace VelSockTrace
