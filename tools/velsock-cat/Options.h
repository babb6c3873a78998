// The options: which command takes which, and what each of them sets.
#pragma once

#include <string>

#include "Arguments.h"

namespace VelSockCat {

struct Option {
    const char* name;  // both with their dashes; empty if it has none
    const char* letter;
    unsigned int commands;  // a bit for each command that takes it
    bool hasValue;
    // Throws Failure with WrongUsage for an invalid value.
    void (*take)(Arguments& arguments, const std::string& value);

    bool BelongsTo(Command command) const noexcept;
};

// Returns null for a string that is not an option.
const Option* FindOption(const std::string& name);

// A number or, of a service for streams or for datagrams, its name.
unsigned short ParsePort(const std::string& text, bool datagrams);

// Ends the program with an explanation.
[[noreturn]] void Refuse(const std::string& text);

}  // namespace VelSockCat
