#include "Socket/FailureText.h"

#include "VelBase/WideLiteral.h"
#include "VelLog/LogMessage.h"

namespace VelNet {

using VelBase::operator""_wide;

namespace {

VelBase::ReturnWString Compose(const unsigned short* label, const unsigned short* description,
                               int error) {
    return ComposeFailureText(label, description, static_cast<unsigned int>(error));
}

}  // namespace

VelBase::WideText BeginFailureText(const unsigned short* label, const unsigned short* description) {
    VelBase::WideText text(FailureTextRoom);
    text.Append(label).Append(" "_wide).Append(description);
    return text;
}

void AppendError(VelBase::WideText& text, const unsigned short* leadIn, int error) {
    text.Append(leadIn)
        .Append(static_cast<unsigned short>(error))
        .Append(" "_wide)
        .Append(Exception::GetErrorString(error));
}

VelBase::ReturnWString ComposeFailureText(const unsigned short* label,
                                          const unsigned short* description, unsigned int error) {
    VelBase::WideText text = BeginFailureText(label, description);
    AppendError(text, ", errno = "_wide, static_cast<int>(error));
    return text.ToReturnWString();
}

void LogFailure(const VelBase::ReturnWString& text, LogFormat format) {
    VelLog::Router* const router = EnabledRouter(&SocketLayerState::errorRouter);
    if (router == nullptr) return;

    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddWideText(text.c_str());
    WriteRecord(*router, format, formatter);
}

void ThrowFailure(const VelBase::ReturnWString& text, SOCKET_ERR code, LogFormat format) {
    LogFailure(text, format);
    throw Exception(text.c_str(), code);
}

void ThrowSystemFailure(const unsigned short* label, const unsigned short* description, int error,
                        LogFormat format) {
    ThrowFailure(Compose(label, description, error), Exception::GetSocketError(error), format);
}

void TryLogFailure(const unsigned short* label, const unsigned short* description, int error,
                   LogFormat format) noexcept {
    TryLogFailure([=] { return Compose(label, description, error); }, format);
}

}  // namespace VelNet
