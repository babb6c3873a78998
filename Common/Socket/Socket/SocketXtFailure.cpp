#include "Socket/SocketXtFailure.h"

#include "Socket/FailureText.h"
#include "VelBase/LibraryConversions.h"
#include "VelBase/WideLiteral.h"

namespace VelNet {

using VelBase::operator""_wide;

namespace {

VelBase::ReturnWString Wide(const char* text) {
    return VelBase::MultiByteToWideChar(text, false);
}

VelBase::ReturnWString Compose(const SocketXtFailure& failure) {
    VelBase::WideText text;
    text.Reserve(FailureTextRoom);
    for (const char* const part : {failure.function, failure.description, failure.call})
        text.Append(Wide(part)).Append(" , "_wide);
    if (*failure.firstAddress != '\0') {
        text.Append(Wide(failure.firstAddress))
            .Append(" : "_wide)
            .Append(Wide(failure.secondAddress));
    }
    AppendError(text, " , errno = "_wide, failure.error);
    return text.ToReturnWString();
}

}  // namespace

void ReportSocketXtError(const SocketXtFailure& failure) noexcept {
    TryLogFailure([&failure] { return Compose(failure); });
}

void ThrowSocketXtError(const SocketXtFailure& failure) {
    ThrowFailure(Compose(failure), Exception::GetSocketError(failure.error));
}

}  // namespace VelNet
