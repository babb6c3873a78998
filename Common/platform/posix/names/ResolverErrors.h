// Calls of the system's resolver, and Winsock's errors for their results.
#pragma once

#include "errors/WinsockError.h"
#include "system/Descriptors.h"

#include <netdb.h>

#include <cerrno>

namespace Posix {

// Returns the Winsock error for an error of getaddrinfo or getnameinfo, which may have left errno;
// None for 0.
WinsockError WinsockFromNameError(int error) noexcept;

// Repeats the call while signals interrupt it; returns a Winsock error or None. The system's
// resolver would leave descriptors of a thread open that is cancelled in it.
template <typename Question>
WinsockError Ask(Question question) {
    const CancellationGuard whole;
    int error = 0;
    do {
        errno = 0;
        error = question();
    } while (error == EAI_SYSTEM && errno == EINTR);
    return WinsockFromNameError(error);
}

// Returns the Winsock error for a look-up's h_errno; if that is not set, errno decides.
WinsockError WinsockFromLookUp(int resolverError, int systemError) noexcept;

// Whether errno means that a resource ran out or something could not be read.
bool IsShortage(int systemError) noexcept;

// Whether the error is one that the resolver returns if neither a table nor a server has told an
// address of the name, as opposed to a failure on this host.
bool MeansUntold(WinsockError error) noexcept;

// Whether the error means that nobody knows the name. The temporary failure (TryAgain) may mean
// that too: the resolver reports it when a server fails, but also when there is none that answers.
// To find out, asks the servers again, which may take seconds.
bool MeansUnknown(WinsockError error, const char* name);

}  // namespace Posix
