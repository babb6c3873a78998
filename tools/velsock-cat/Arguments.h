// The command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace VelSockCat {

enum class Command { Listen, Connect, Help, Version };

// Which way the bytes go.
enum class Direction { Both, SendOnly, ReceiveOnly };

struct Arguments {
    Command command = Command::Help;
    std::string host = "127.0.0.1";
    unsigned short port = 0;
    Direction direction = Direction::Both;
    std::vector<std::string> categories;  // of the log, by the library's names
    std::optional<std::string> logFile;
    std::optional<unsigned int> receiveTimeout;  // milliseconds
    std::optional<unsigned int> sendTimeout;     // milliseconds
};

// The arguments without the program's name. Throws Failure with WrongUsage.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace VelSockCat
