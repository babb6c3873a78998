// Strings for display.
#pragma once

#include <string>
#include <string_view>

namespace VelSockTools {

// Returns the text with U+FFFD for each part that is not valid UTF-8.
std::string ValidUtf8(const std::string& text);

// A host name may contain any bytes. Returns it with control characters shown as \x0A and the like,
// so that they can neither begin a second line nor control the terminal.
std::string OneLine(std::string_view text);

// Returns the two hexadecimal digits of a byte.
std::string HexDigits(unsigned char byte);

}  // namespace VelSockTools
