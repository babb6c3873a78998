// The files that settings are read from.
#pragma once

#include "system/Descriptors.h"

#include <fcntl.h>

#include <string>

namespace Posix {

// How a file is opened: without blocking, since opening a pipe would wait for a writer.
inline constexpr int FileFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// What was opened so, if it is a regular file; what is none is not there.
Descriptor RegularFile(Descriptor opened) noexcept;

// Returns the system's error number or 0; a file of more than a mebibyte is an error.
unsigned int ReadWhole(const Descriptor& file, std::string& text);

// errno as the error of what could not be opened; 0 when it was simply not there.
unsigned int ErrorUnlessMissing() noexcept;

}  // namespace Posix
