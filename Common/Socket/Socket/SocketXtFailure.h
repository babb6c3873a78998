// What a failure of the extended socket says, and how it reaches the log and the caller.
#pragma once

namespace VelNet {

// The parts of a report. Without a first address text neither is shown.
struct SocketXtFailure {
    const char* function;
    const char* description;
    const char* call;
    int error;  // read by whoever made the failing call, at once
    const char* firstAddress = "";
    const char* secondAddress = "";
};

// The text of both is "<function> , <description> , <call> , [<first> : <second>] , errno = <unit>
// <error text>", the error number being one unit of its low 16 bits. It is logged under "Error" if
// that is switched on.

// For a failure that does not end its operation. A report that cannot be written is lost.
void ReportSocketXtError(const SocketXtFailure& failure) noexcept;

// For one that does: throws Exception with the text and the code that the number maps to.
[[noreturn]] void ThrowSocketXtError(const SocketXtFailure& failure);

}  // namespace VelNet
