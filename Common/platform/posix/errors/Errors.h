// The thread's last Winsock error, and the ways from the system's error numbers to Winsock's.
#pragma once

#include "Platform/Winsock.h"
#include "errors/WinsockError.h"

namespace Posix {

// Read and written by every transfer: the initial-exec model makes that one instruction. It needs
// the module's thread storage to be small, so nothing else in the module may be thread_local and
// large.
[[gnu::visibility("hidden"),
  gnu::tls_model("initial-exec")]] extern constinit thread_local int lastError;

// The result of a successful call.
inline int Succeed(int result = 0) noexcept {
    lastError = 0;
    return result;
}

// The result of a failed call.
[[gnu::cold]] int Fail(int winsockError) noexcept;

// The same with the number that stands for errno.
[[gnu::cold]] int FailFromErrno() noexcept;

int WinsockFromErrno(int error) noexcept;
int WinsockFromResolver(int resolverError) noexcept;

// The system's number that a Winsock number stands for; 0 for those that the system does not know.
int ErrnoFromWinsock(int winsockError) noexcept;

}  // namespace Posix
