// The command line.
#pragma once

#include <string>
#include <vector>

#include "Questions.h"

namespace VelSockResolve {

enum class Command { Help, Version, Answer };

struct Arguments {
    Command command = Command::Answer;
    const Question* question = nullptr;
    std::vector<std::string> operands;
    bool cache = false;
    bool json = false;
};

// Parses the arguments, without the program's name. Throws Failure with WrongUsage.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace VelSockResolve
