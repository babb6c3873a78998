#include "Socket/FailureText.h"

#include "VelBase/WideLiteral.h"
#include "VelLog/LogMessage.h"

namespace VelNet {

using VelBase::operator""_wide;

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

namespace {

VelBase::WideText SystemFailureText(const unsigned short* label, const unsigned short* description,
                                    int error) {
    VelBase::WideText text = BeginFailureText(label, description);
    AppendError(text, ", errno = "_wide, error);
    return text;
}

}  // namespace

VelBase::ReturnWString ComposeFailureText(const unsigned short* label,
                                          const unsigned short* description, unsigned int error) {
    return SystemFailureText(label, description, static_cast<int>(error)).ToReturnWString();
}

void LogFailure(const VelBase::WideText& text, const OwnSocket* socket, const LogFormat& format) {
    VelLog::Router* const router = EnabledRouter(&SocketLayerState::errorRouter);
    if (router == nullptr) return;

    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddWideText(text.Units());
    if (socket != nullptr) formatter.SetConnection(socket->ConnectionNumber());
    WriteRecord(*router, format, formatter);
}

Exception LoggedFailure(const VelBase::WideText& text, SOCKET_ERR code, const OwnSocket* socket,
                        const LogFormat& format) {
    LogFailure(text, socket, format);
    return {text.Units(), code};
}

Exception LoggedSystemFailure(const unsigned short* label, const unsigned short* description,
                              int error, const OwnSocket* socket, const LogFormat& format) {
    return LoggedFailure(SystemFailureText(label, description, error),
                         Exception::GetSocketError(error), socket, format);
}

void ThrowFailure(const VelBase::WideText& text, SOCKET_ERR code, const OwnSocket* socket) {
    throw LoggedFailure(text, code, socket);
}

void ThrowSystemFailure(const unsigned short* label, const unsigned short* description, int error,
                        const OwnSocket* socket, const LogFormat& format) {
    throw LoggedSystemFailure(label, description, error, socket, format);
}

void TryLogFailure(const unsigned short* label, const unsigned short* description, int error,
                   const OwnSocket* socket, const LogFormat& format) noexcept {
    TryLogFailure([=] { return SystemFailureText(label, description, error); }, socket, format);
}

}  // namespace VelNet
