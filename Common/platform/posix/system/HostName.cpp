#include "system/HostName.h"

#include "errors/Errors.h"

#include <unistd.h>

#include <cerrno>

namespace Posix {

namespace {

constexpr std::size_t Room = sizeof HostNameText::text;

// gethostname reports a name that it cut off either by an error or by a missing terminator.
int ReadHostName(HostNameText& name) noexcept {
    if (::gethostname(name.text, Room - 1) < 0) return errno;
    return name.text[Room - 2] == '\0' ? 0 : ENAMETOOLONG;
}

}  // namespace

WinsockError HostName(HostNameText& name) noexcept {
    name = {};
    const int error = ReadHostName(name);
    if (error == 0) return WinsockError::None;
    name = {};
    // Winsock reports a name that is too long as a buffer that is too small.
    return error == ENAMETOOLONG ? WinsockError::Fault : WinsockFromErrno(error);
}

}  // namespace Posix
