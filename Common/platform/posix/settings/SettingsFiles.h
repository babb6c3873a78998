// Reads the files with settings.
#pragma once

#include "system/Descriptors.h"

#include <fcntl.h>

#include <string>

namespace Posix {

// The flags for opening a file. O_NONBLOCK, since opening a pipe would wait for a writer.
inline constexpr int FileFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;

// Returns the descriptor if it is a regular file; anything else counts as missing.
Descriptor RegularFile(Descriptor opened) noexcept;

// Returns the system's error number or 0; a file of more than a mebibyte is an error.
unsigned int ReadWhole(const Descriptor& file, std::string& text);

// Returns errno after a failed open; 0 if there was nothing to open.
unsigned int ErrorUnlessMissing() noexcept;

}  // namespace Posix
