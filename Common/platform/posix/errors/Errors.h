// The thread's last Winsock error, and the translation of the system's error numbers to Winsock's.
#pragma once

#include "Platform/Winsock.h"
#include "errors/WinsockError.h"

namespace Posix {

// Every transfer writes it, and with the initial-exec model that takes one instruction. That model
// takes its memory from the static TLS block, of which a module that is loaded by dlopen gets
// little, so nothing else in the module may be thread_local and large.
[[gnu::visibility("hidden"),
  gnu::tls_model("initial-exec")]] extern constinit thread_local WinsockError lastError;

// Returns result, the result of a successful call, and clears the last error.
inline int Succeed(int result = 0) noexcept {
    lastError = WinsockError::None;
    return result;
}

// Returns the result of a failed call and sets the last error.
[[gnu::cold]] int Fail(WinsockError error) noexcept;

// The same with the number for errno.
[[gnu::cold]] int FailFromErrno() noexcept;

// Returns the result of a call whose result is its error number, and sets the last error.
int ReturnError(WinsockError error) noexcept;

WinsockError WinsockFromErrno(int error) noexcept;
WinsockError WinsockFromResolver(int resolverError) noexcept;

// Returns the system's number for one of Winsock's, or 0 if the system has none.
int ErrnoFromWinsock(WinsockError error) noexcept;

}  // namespace Posix
