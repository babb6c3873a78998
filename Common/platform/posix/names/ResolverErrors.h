// Calls of the system's resolver, and Winsock's errors for their results.
#pragma once

#include "errors/WinsockError.h"

#include <netdb.h>

#include <cerrno>

namespace Posix {

// Returns the Winsock error for an error of getaddrinfo or getnameinfo, which may have left errno;
// 0 for none.
WinsockError WinsockFromNameError(int error) noexcept;

// Repeats the call while signals interrupt it; returns a Winsock error or None.
template <typename Question>
WinsockError Ask(Question question) {
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

// Whether the resolver returns this Winsock error for a name without any entry, as opposed to a
// query that failed locally.
bool MeansUntold(WinsockError error) noexcept;

// Whether the error means that nobody knows the name. What the resolver calls a temporary failure
// may mean that too: not only that a server fails, but also that there is none that answers. May
// wait to find out.
bool MeansUnknown(WinsockError error, const char* name);

}  // namespace Posix
