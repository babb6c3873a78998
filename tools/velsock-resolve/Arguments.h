// The command line.
#pragma once

#include <VelNet/SocketXt.h>

#include <optional>
#include <string>
#include <vector>

#include "Questions.h"

namespace VelSockResolve {

enum class Command { Help, Version, Answer, Doctor };

struct Arguments {
    Command command = Command::Answer;
    const Question* question = nullptr;
    std::vector<std::string> operands;
    bool cache = false;
    bool json = false;
    bool verbose = false;
    bool answersAlone = false;
    std::optional<std::string> log;                        // the text of --log
    std::optional<VelNet::SocketXt::ADDR_FAMILY> version;  // IPv4 if omitted

    // Of several questions each answer tells which it belongs to.
    bool ShowsQuestions() const {
        return question->takesOperands && operands.size() != 1 && !answersAlone;
    }

    bool IsIpv6() const { return version == VelNet::SocketXt::FAMILY_IPV6; }
};

// Parses the arguments, without the program's name. Throws Failure with WrongUsage.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace VelSockResolve
