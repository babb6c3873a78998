#include "Failure.h"

#include <VelBase/TextConversions.h>
#include <VelCompanion/Errors.h>

#include <atomic>
#include <cstdio>
#include <utility>

#include "Text.h"

namespace VelSockTools {

namespace {

std::atomic<bool> isVerbose = false;

std::string Line(const char* program, const std::string& text) {
    return std::string(program) + ": " + OneLine(ValidUtf8(text)) + "\n";
}

// At once, so that lines of several processes do not mix.
void WriteError(const std::string& lines) {
    std::fputs(lines.c_str(), stderr);
    std::fflush(stderr);
}

}  // namespace

Failure::Failure(ExitCode code, const std::string& what, const VelNet::Exception& cause,
                 const std::string& reason)
    : std::runtime_error(what + ": " + reason),
      code_(code),
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

void BeVerbose() noexcept {
    isVerbose = true;
}

void Remark(const char* program, const std::string& text) {
    if (isVerbose) WriteError(Line(program, text));
}

ExitCode Report(const char* program, const Failure& failure) {
    std::string lines = Line(program, failure.what());
    if (isVerbose) {
        for (const std::string& detail : failure.Details())
            lines += "  " + OneLine(ValidUtf8(detail)) + "\n";
    }
    WriteError(lines);
    return failure.Code();
}

}  // namespace VelSockTools
