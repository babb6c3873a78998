#include "Transfer.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;

ExitCode CodeOf(const VelNet::Exception& exception) {
    if (exception.GetErrorCode() == VelNet::SOCKET_ERR_TIMEDOUT) return ExitCode::TimedOut;
    if (VelSockTools::IsNotResolved(exception)) return ExitCode::NameNotResolvable;
    return ExitCode::ConnectionLost;
}

}  // namespace

VelSockTools::Failure TransferFailure(const std::string& what, const VelNet::Exception& exception) {
    return TransferFailure(what, exception, VelSockTools::ReasonOf(exception));
}

VelSockTools::Failure TransferFailure(const std::string& what, const VelNet::Exception& exception,
                                      const std::string& reason) {
    return {CodeOf(exception), what, exception, reason};
}

ExitCode OpeningCodeOf(const VelNet::Exception& exception) {
    const ExitCode code = CodeOf(exception);
    return code == ExitCode::ConnectionLost ? ExitCode::NotConnected : code;
}

VelSockTools::Failure OpeningFailure(const std::string& what, const Refusal& refusal) {
    return VelSockTools::Failure(OpeningCodeOf(refusal.last), what, refusal.last)
        .With(refusal.attempts);
}

bool IsNothingReceived(const VelNet::Exception& exception) {
    return exception.GetErrorCode() == VelNet::SOCKET_ERR_UNKNOWN;
}

}  // namespace VelSockCat
