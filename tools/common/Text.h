// Strings for display.
#pragma once

#include <string>
#include <string_view>

namespace VelSockTools {

// A host name may contain any bytes. Returns it with control characters shown as \x0A and the like,
// so that they can neither begin a second line nor control the terminal.
std::string OneLine(std::string_view text);

// Returns the two hexadecimal digits of a byte.
std::string HexDigits(unsigned char byte);

}  // namespace VelSockTools
