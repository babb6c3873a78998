// The command line.
#pragma once

#include <string>
#include <vector>

#include "Filter.h"

namespace VelSockTrace {

enum class Command { Help, Version, List, Show };

struct Arguments {
    Command command = Command::List;
    unsigned int number = 0;  // of the conversation to show
    std::vector<std::string> files;
    Filter filter;
    bool follow = false;
    bool json = false;
    bool hex = false;
    std::string capture;  // where to write it; empty for not at all
    std::string page;
};

// Parses the arguments, without the program's name. Throws Failure with WrongUsage.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace VelSockTrace
