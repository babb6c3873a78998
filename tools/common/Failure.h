// The tools' exit codes, and the exception that carries one of them.
#pragma once

#include <VelBase/Message.h>
#include <VelNet/Exception.h>

#include <optional>
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
    NothingFound = 8,
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

    // The library's number, if the library has failed.
    std::optional<VelNet::SOCKET_ERR> Error() const noexcept { return error_; }

private:
    ExitCode code_;
    std::optional<VelNet::SOCKET_ERR> error_;
    std::vector<std::string> details_;
};

// Whether the resolver failed, as opposed to the socket.
bool IsNotResolved(const VelNet::Exception& exception) noexcept;

// Returns the library's text in UTF-8.
std::string TextOf(const VelNet::Exception& exception);

}  // namespace VelSockTools
