// How the program fails: the exit codes, and the exception that carries one of them.
#pragma once

#include <VelNet/Exception.h>

#include <stdexcept>
#include <string>

namespace VelSockCat {

// What the process ends with. Part of the program's contract: scripts decide by these numbers.
enum class ExitCode : int {
    InOrder = 0,
    WrongUsage = 1,
    NameNotResolvable = 2,
    NotConnected = 3,
    ConnectionLost = 4,
    TimedOut = 5,
    LocalFailure = 6,
};

// A failure that ends the program, with the text for the person who called it.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    // The library's own text in UTF-8, with its code.
    Failure(ExitCode code, const VelNet::Exception& cause);

    ExitCode Code() const noexcept { return code_; }

private:
    ExitCode code_;
};

// Prints the failure as one line on standard error and returns its exit code.
ExitCode Report(const Failure& failure);

}  // namespace VelSockCat
