// The files that settings are read from.
#pragma once

#include <string>

#include "system/Descriptors.h"

namespace Posix {

// Opens a file below the folder; what is no regular file is not there.
Descriptor OpenFile(int folder, const char* name) noexcept;

// Returns the system's error number or 0; a file of more than a mebibyte is an error.
unsigned int ReadWhole(const Descriptor& file, std::string& text);

// errno as the error of what could not be opened; 0 when it was simply not there.
unsigned int ErrorUnlessMissing() noexcept;

}  // namespace Posix
