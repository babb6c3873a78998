#include "Failure.h"

#include <VelBase/TextConversions.h>
#include <VelCompanion/Errors.h>

#include <utility>

namespace VelSockTools {

Failure::Failure(ExitCode code, const std::string& what, const VelNet::Exception& cause,
                 const std::string& reason)
    : std::runtime_error(what + ": " + reason),
      code_(code),
      error_(cause.GetErrorCode()),
      details_{VelCompanion::Describe(cause)} {}

Failure::Failure(ExitCode code, const VelBase::Message& cause)
    : Failure(code, VelCompanion::Describe(cause)) {}

Failure Failure::With(const std::vector<std::string>& details) && {
    details_.insert(details_.begin(), details.begin(), details.end());
    return std::move(*this);
}

bool IsNotResolved(const VelNet::Exception& exception) noexcept {
    switch (exception.GetErrorCode()) {
        case VelNet::SOCKET_ERR_HOST_NOT_FOUND:
        case VelNet::SOCKET_ERR_TRY_AGAIN:
        case VelNet::SOCKET_ERR_NO_RECOVERY:
        case VelNet::SOCKET_ERR_NO_DATA:
            return true;
        default:
            return false;
    }
}

std::string ReasonOf(const VelNet::Exception& exception) {
    const VelNet::SOCKET_ERR code = exception.GetErrorCode();
    if (code == VelNet::SOCKET_ERR_UNKNOWN) return VelCompanion::Describe(exception);
    return std::string(VelCompanion::EntryOf(code).text) + " " + NumberOf(exception);
}

std::string NumberOf(const VelNet::Exception& exception) {
    const VelNet::SOCKET_ERR code = exception.GetErrorCode();
    return std::string("(").append(std::to_string(code)).append(" ") +
           VelCompanion::SymbolOf(code) + ")";
}

std::string TextOf(const VelNet::Exception& exception) {
    return VelBase::WideCharToUTF8(exception.GetMessage(), false).c_str();
}

}  // namespace VelSockTools
