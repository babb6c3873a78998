// The tools' exit codes, and the exception that carries one of them.
#pragma once

#include <VelBase/Message.h>
#include <VelNet/Exception.h>

#include <stdexcept>
#include <string>

namespace VelSockTools {

// The exit code of a process. Part of every tool's contract: scripts depend on these numbers, and a
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

// A failure that ends the program, with a text for its user.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    // The library's own text in UTF-8, with its code, and the tool's remark.
    Failure(ExitCode code, const VelNet::Exception& cause, const std::string& remark = "");

    // The support layer's text.
    Failure(ExitCode code, const VelBase::Message& cause);

    ExitCode Code() const noexcept { return code_; }

private:
    ExitCode code_;
};

// Whether the resolver failed, as opposed to the socket.
bool IsNotResolved(const VelNet::Exception& exception) noexcept;

// Returns the library's text in UTF-8.
std::string TextOf(const VelNet::Exception& exception);

// Prints the program's name and the failure as one line on standard error, and returns the
// failure's exit code.
ExitCode Report(const char* program, const Failure& failure);

}  // namespace VelSockTools
