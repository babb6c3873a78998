// The tools' exit codes, and the exception that carries one of them.
#pragma once

#include <VelBase/Message.h>
#include <VelNet/Exception.h>

#include <stdexcept>
#include <string>
#include <vector>

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

// Returns the error's text, number and symbol; the library's text if the error is an unknown one.
std::string ReasonOf(const VelNet::Exception& exception);

// Returns "(10061 SOCKET_ERR_CONNREFUSED)".
std::string NumberOf(const VelNet::Exception& exception);

// A failure that ends the program, with one line for its user and details for those who ask.
class Failure : public std::runtime_error {
public:
    Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

    // What could not be done, and why, by ReasonOf or in the tool's own words: "cannot connect to
    // localhost port 1: Connection refused (10061 SOCKET_ERR_CONNREFUSED)". The library's text is a
    // detail.
    Failure(ExitCode code, const std::string& what, const VelNet::Exception& cause)
        : Failure(code, what, cause, ReasonOf(cause)) {}
    Failure(ExitCode code, const std::string& what, const VelNet::Exception& cause,
            const std::string& reason);

    // The support layer's text.
    Failure(ExitCode code, const VelBase::Message& cause);

    // The same failure with these lines before its details.
    Failure With(const std::vector<std::string>& details) &&;

    ExitCode Code() const noexcept { return code_; }
    const std::vector<std::string>& Details() const noexcept { return details_; }

private:
    ExitCode code_;
    std::vector<std::string> details_;
};

// Whether the resolver failed, as opposed to the socket.
bool IsNotResolved(const VelNet::Exception& exception) noexcept;

// Returns the library's text in UTF-8.
std::string TextOf(const VelNet::Exception& exception);

// From then on the program shows remarks and the details of failures.
void BeVerbose() noexcept;

// Prints the program's name and the text as one line on standard error, if the program is verbose.
void Remark(const char* program, const std::string& text);

// Prints the program's name and the failure as one line on standard error, and below it the details
// if the program is verbose. Returns the failure's exit code.
ExitCode Report(const char* program, const Failure& failure);

}  // namespace VelSockTools
