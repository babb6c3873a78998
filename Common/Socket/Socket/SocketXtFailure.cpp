#include "Socket/SocketXtFailure.h"

#include "Socket/FailureText.h"
#include "VelBase/WideLiteral.h"

namespace VelNet {

using VelBase::operator""_wide;

namespace {

VelBase::WideText Compose(const SocketXtFailure& failure) {
    VelBase::WideText text(FailureTextRoom);
    for (const char* const part : {failure.function, failure.description, failure.call})
        text.AppendMultiByte(part).Append(" , "_wide);
    if (*failure.firstAddress != '\0') {
        text.AppendMultiByte(failure.firstAddress)
            .Append(" : "_wide)
            .AppendMultiByte(failure.secondAddress);
    }
    AppendError(text, " , errno = "_wide, failure.error);
    return text;
}

}  // namespace

void ReportSocketXtError(const SocketXtFailure& failure, const OwnSocket* socket) noexcept {
    TryLogFailure([&failure] { return Compose(failure); }, socket);
}

Exception LoggedSocketXtError(const SocketXtFailure& failure, const OwnSocket* socket) {
    return LoggedFailure(Compose(failure), Exception::GetSocketError(failure.error), socket);
}

void ThrowSocketXtError(const SocketXtFailure& failure, const OwnSocket* socket) {
    throw LoggedSocketXtError(failure, socket);
}

}  // namespace VelNet
