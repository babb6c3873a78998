// What happens, one line on standard error each: a sentence for people, or a JSON object for
// programs. Everything that the tools tell about themselves passes through here. From any thread.
#pragma once

#include <string>

#include "Failure.h"
#include "Json.h"

namespace VelSockTools {

struct Event {
    const char* name;      // for programs: "listening" for instance
    std::string sentence;  // for people: without a line feed
    JsonObject members;    // what the sentence says, for programs
};

// From then on events are JSON objects.
void TellInJson() noexcept;
bool IsToldInJson() noexcept;

// From then on people see remarks and the details of failures.
void BeVerbose() noexcept;
bool IsVerbose() noexcept;

void Tell(const Event& event);

// The same for what people see on request only, after the program's name. Programs always do.
void Remark(const char* program, const Event& event);

// Tells a failure, to people in one line and on request with its details below it. Returns its exit
// code.
ExitCode Report(const char* program, const Failure& failure);

}  // namespace VelSockTools
