// What a failure says, and how it reaches the log and the caller.
//
// Nothing here reads the system's error number: whoever made the failing call reads it at once and
// passes it on.
#pragma once

#include "Socket/LogFormat.h"
#include "Socket/SocketLayerState.h"
#include "VelBase/ReturnWString.h"
#include "VelBase/WideText.h"
#include "VelNet/Exception.h"

#include <cstddef>

namespace VelNet {

// How a failure stands in a record of its own.
inline constexpr LogFormat FailureFormat = "%1"_format;

// Room that is made at once for a failure text; longer ones grow.
inline constexpr std::size_t FailureTextRoom = 1020;

// A failure text so far: label, blank, description, with room for the rest.
VelBase::WideText BeginFailureText(const unsigned short* label, const unsigned short* description);

// Appends the lead-in, the error number, a blank and the error's text. Required: the number is one
// unit of its low 16 bits, not digits; where these are zero, the unit ends the text for every
// reader.
void AppendError(VelBase::WideText& text, const unsigned short* leadIn, unsigned int error);

// The usual failure text: label, blank, description, ", errno = ", number, blank, error text.
VelBase::ReturnWString ComposeFailureText(const unsigned short* label,
                                          const unsigned short* description, unsigned int error);

// Logs the text under "Error" if that is switched on, then throws Exception with the text and the
// code.
[[noreturn]] void ThrowFailure(const VelBase::ReturnWString& text, SOCKET_ERR code,
                               LogFormat format = FailureFormat);

// The same for a usual failure text with an error of the system.
[[noreturn]] void ThrowSystemFailure(const unsigned short* label, const unsigned short* description,
                                     int error);

// Logs the text under "Error" if that is switched on.
void LogFailure(const VelBase::ReturnWString& text, LogFormat format);

// Logs the text that compose returns under "Error" if that is switched on. For what must not throw:
// what goes wrong here, exhausted memory included, is lost.
template <class Compose>
void TryLogFailure(Compose compose, LogFormat format = FailureFormat) noexcept {
    if (EnabledRouter(&SocketLayerState::errorRouter) == nullptr) return;
    try {
        LogFailure(compose(), format);
    } catch (...) {
        return;
    }
}

// The same for a usual failure text.
void TryLogFailure(const unsigned short* label, const unsigned short* description, int error,
                   LogFormat format = FailureFormat) noexcept;

}  // namespace VelNet
