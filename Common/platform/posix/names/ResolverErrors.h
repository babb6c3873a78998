// Questions to the system's resolver, and Winsock's errors for its answers.
#pragma once

#include <netdb.h>

#include <cerrno>

namespace Posix {

// The Winsock error that an error of getaddrinfo or getnameinfo stands for, with the errno that it
// left; 0 for none.
int WinsockFromNameError(int error) noexcept;

// Asks until no signal interrupts; the result is a Winsock error or 0.
template <typename Question>
int Ask(Question question) {
    int error = 0;
    do {
        errno = 0;
        error = question();
    } while (error == EAI_SYSTEM && errno == EINTR);
    return WinsockFromNameError(error);
}

// The Winsock error that a look-up's number of the resolver stands for; where it tells none, the
// number of the system decides.
int WinsockFromLookUp(int resolverError, int systemError) noexcept;

// Whether the number of the system tells that it ran out of something, or could not read.
bool IsShortage(int systemError) noexcept;

// Whether the Winsock error is what the resolver has to say of a name that nobody told it anything
// of, and not of a question that failed here.
bool MeansUntold(int error) noexcept;

// Whether it tells that nobody knows the name. What the resolver calls a temporary failure may mean
// that, too: that a server fails, but also that none is there, or willing, to be asked. May wait to
// find out.
bool MeansUnknown(int error, const char* name);

}  // namespace Posix
