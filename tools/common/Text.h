// Texts for people.
#pragma once

#include <string>
#include <string_view>

namespace VelSockTools {

// A host name may hold anything. Made visible, as \x0A and the like, its control characters can
// neither start a second line nor drive the terminal.
std::string OneLine(std::string_view text);

// The two hexadecimal digits of a byte.
std::string HexDigits(unsigned char byte);

}  // namespace VelSockTools
