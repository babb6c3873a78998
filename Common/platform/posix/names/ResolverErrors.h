// Questions to the system's resolver, and Winsock's errors for its answers.
#pragma once

#include <netdb.h>

#include <cerrno>

namespace Posix {

// The Winsock error that an error of getaddrinfo or getnameinfo stands for; 0 for none.
int WinsockFromNameError(int error) noexcept;

// Asks until no signal interrupts; the result is a Winsock error or 0.
template <typename Question>
int Ask(Question question) {
    int error = 0;
    do {
        error = question();
    } while (error == EAI_SYSTEM && errno == EINTR);
    return WinsockFromNameError(error);
}

}  // namespace Posix
