#include "Transfer.h"

#include <string_view>

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;

ExitCode CodeOf(const VelNet::Exception& exception) {
    if (exception.GetErrorCode() == VelNet::SOCKET_ERR_TIMEDOUT) return ExitCode::TimedOut;
    if (VelSockTools::IsNotResolved(exception)) return ExitCode::NameNotResolvable;
    return ExitCode::ConnectionLost;
}

bool BeginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool EndsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

}  // namespace

VelSockTools::Failure TransferFailure(const VelNet::Exception& exception,
                                      const std::string& remark) {
    return {CodeOf(exception), exception, remark};
}

// It shares its code with every unknown error; the text tells them apart, and each of the socket
// families has its own.
bool IsNothingReceived(const VelNet::Exception& exception) {
    if (exception.GetErrorCode() != VelNet::SOCKET_ERR_UNKNOWN) return false;
    const std::string text = VelSockTools::TextOf(exception);
    return EndsWith(text, "the connection has been closed.") ||
           BeginsWith(text,
                      "VelNet::SocketXtImpl::Receive , ::recv could not be completed because the "
                      "connection has been closed , ");
}

}  // namespace VelSockCat
