#include "Failure.h"

#include <VelBase/TextConversions.h>

#include <cstdio>

#include "Text.h"

namespace VelSockTools {

namespace {

std::string Describe(const VelNet::Exception& exception) {
    return TextOf(exception) + " (code " + std::to_string(exception.GetErrorCode()) + ")";
}

}  // namespace

Failure::Failure(ExitCode code, const VelNet::Exception& cause, const std::string& remark)
    : Failure(code, Describe(cause) + remark) {}

Failure::Failure(ExitCode code, const VelBase::Message& cause)
    : Failure(code, VelBase::WideCharToUTF8(cause.GetMessage(), false).c_str()) {}

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

std::string TextOf(const VelNet::Exception& exception) {
    return VelBase::WideCharToUTF8(exception.GetMessage(), false).c_str();
}

ExitCode Report(const char* program, const Failure& failure) {
    const std::string line = std::string(program) + ": " + OneLine(failure.what()) + "\n";
    std::fputs(line.c_str(), stderr);
    return failure.Code();
}

}  // namespace VelSockTools
