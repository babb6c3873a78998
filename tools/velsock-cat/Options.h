// The options: which command takes which, and what each of them says.
#pragma once

#include <string>

#include "Arguments.h"

namespace VelSockCat {

struct Option {
    const char* name;
    unsigned int commands;  // one bit for each command that takes it
    bool hasValue;
    // Throws Failure with WrongUsage for a value that will not do.
    void (*take)(Arguments& arguments, const std::string& value);

    bool BelongsTo(Command command) const noexcept;
};

// Null for a text that is no option.
const Option* FindOption(const std::string& name);

unsigned short ParsePort(const std::string& text);

// Ends the program with a word on what was wrong.
[[noreturn]] void Refuse(const std::string& text);

}  // namespace VelSockCat
