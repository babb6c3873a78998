// Composes the texts of failures, logs them and throws them.
//
// Nothing here reads the system's error number: the caller reads it right after the failing call
// and passes it on.
#pragma once

#include "Socket/LogFormat.h"
#include "Socket/OwnSocket.h"
#include "Socket/SocketLayerState.h"
#include "VelBase/ReturnWString.h"
#include "VelBase/WideText.h"
#include "VelNet/Exception.h"

#include <cstddef>

namespace VelNet {

// The format of a failure's log record.
inline constexpr LogFormat FailureFormat = "%1"_format;

// How many units are reserved for a failure text; a longer one grows.
inline constexpr std::size_t FailureTextRoom = 1020;

// Begins a failure text: label, space, description. Reserves memory for the rest.
VelBase::WideText BeginFailureText(const unsigned short* label, const unsigned short* description);

// Appends the lead-in, the error number, a space and the error's text.
//
// Required (FailureTexts.CarryTheNumberAsOneUnit): the number is one unit of its low 16 bits, not
// digits. If these are zero, the unit ends the text for every reader.
void AppendError(VelBase::WideText& text, const unsigned short* leadIn, int error);

// Returns the usual failure text: label, space, description, ", errno = ", number, space, error
// text.
VelBase::ReturnWString ComposeFailureText(const unsigned short* label,
                                          const unsigned short* description, unsigned int error);

// Logs the text under "Error" if that router is on, as a record of the socket that has failed, if
// any, and returns what is to be thrown, made of the text and the code.
//
// A caller that throws it itself, and has nothing to destroy then, makes a failure cheap: unwinding
// takes longer than all else.
[[nodiscard]] Exception LoggedFailure(const VelBase::WideText& text, SOCKET_ERR code,
                                      const OwnSocket* socket = nullptr,
                                      const LogFormat& format = FailureFormat);

// The same with the usual failure text for a number of the system.
[[nodiscard]] Exception LoggedSystemFailure(const unsigned short* label,
                                            const unsigned short* description, int error,
                                            const OwnSocket* socket = nullptr,
                                            const LogFormat& format = FailureFormat);

// Throw what those return.
[[noreturn]] void ThrowFailure(const VelBase::WideText& text, SOCKET_ERR code,
                               const OwnSocket* socket = nullptr);
[[noreturn]] void ThrowSystemFailure(const unsigned short* label, const unsigned short* description,
                                     int error, const OwnSocket* socket = nullptr,
                                     const LogFormat& format = FailureFormat);

// Logs the text under "Error" if that router is on.
void LogFailure(const VelBase::WideText& text, const OwnSocket* socket, const LogFormat& format);

// Logs the text that compose returns under "Error" if that router is on. For callers that must not
// throw: any failure in here, exhausted memory included, is swallowed.
template <class Compose>
void TryLogFailure(Compose compose, const OwnSocket* socket = nullptr,
                   const LogFormat& format = FailureFormat) noexcept {
    if (EnabledRouter(&SocketLayerState::errorRouter) == nullptr) return;
    try {
        LogFailure(compose(), socket, format);
    } catch (...) {
        return;
    }
}

// The same with the usual failure text.
void TryLogFailure(const unsigned short* label, const unsigned short* description, int error,
                   const OwnSocket* socket = nullptr,
                   const LogFormat& format = FailureFormat) noexcept;

}  // namespace VelNet
