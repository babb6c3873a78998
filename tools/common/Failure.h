// How the tools fail: the exit codes, and the exception that carries one of them.
#pragma once

#include <VelBase/Message.h>
#include <VelNet/Exception.h>

#include <stdexcept>
#include <string>

namespace VelSockTools {

// What a process ends with. Part of every tool's contract: scripts decide by these numbers, and a
// number means the same in all tools.
enum class ExitCode : int {
    InOrder = 0,
    WrongUsage = 1,
    NameNotResolvable = 2,
    NotConnected = 3,
    ConnectionLost = 4,
    TimedOut = 5,
    LocalFailure = 6,
    NotConfigured = 7,
};

// A failure that ends the program, with the text for the person who called it.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    // The library's own text in UTF-8, with its code, and what the tool has to say about it.
    Failure(ExitCode code, const VelNet::Exception& cause, const std::string& remark = "");

    // What the support layer has to say.
    Failure(ExitCode code, const VelBase::Message& cause);

    ExitCode Code() const noexcept { return code_; }

private:
    ExitCode code_;
};

// Whether the resolver has no answer, as opposed to a failure of the socket.
bool IsNotResolved(const VelNet::Exception& exception) noexcept;

// The library's text in UTF-8.
std::string TextOf(const VelNet::Exception& exception);

// Prints the failure as one line on standard error, behind the program's name, and returns its exit
// code.
ExitCode Report(const char* program, const Failure& failure);

}  // namespace VelSockTools
