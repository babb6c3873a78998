// What causes each of the library's errors, and what mends it: the sentences of docs/errors.md, of
// which the build makes the table.
#pragma once

namespace VelSockTools {

struct ErrorCause {
    int code;
    const char* cause;
    const char* remedy;  // empty if there is nothing to mend
};

// Returns null for a number that is no code of the library.
const ErrorCause* FindCause(int code) noexcept;

}  // namespace VelSockTools
