// Composes, logs and throws the failures of the extended socket.
#pragma once

#include "Socket/OwnSocket.h"
#include "VelNet/Exception.h"

namespace VelNet {

// The parts of a failure text. Without a first address text neither is shown.
struct SocketXtFailure {
    const char* function;
    const char* description;
    const char* call;
    int error;  // read right after the failing call
    const char* firstAddress = "";
    const char* secondAddress = "";
};

// The text of both is "<function> , <description> , <call> , [<first> : <second>] , errno = <unit>
// <error text>", where the error number is one unit of its low 16 bits. It is logged under "Error"
// if that router is on.

// For failures that do not end their operation. A report that cannot be written is lost.
void ReportSocketXtError(const SocketXtFailure& failure,
                         const OwnSocket* socket = nullptr) noexcept;

// For failures that do: returns what is to be thrown, made of the text and the code for the number.
// See LoggedFailure.
[[nodiscard]] Exception LoggedSocketXtError(const SocketXtFailure& failure,
                                            const OwnSocket* socket = nullptr);

// Throws what that returns.
[[noreturn]] void ThrowSocketXtError(const SocketXtFailure& failure,
                                     const OwnSocket* socket = nullptr);

}  // namespace VelNet
