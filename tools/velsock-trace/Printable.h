// Text from a log, for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VelSockTrace {

// Returns the text as one line of valid UTF-8 that cannot control a terminal: control characters,
// those that change the direction or end a line, and bytes that are no UTF-8 are shown as \x1B and
// the like. The backslash stays as it is.
std::string Printable(std::string_view text);

// The same for at most so many bytes of it, with "..." for the rest.
std::string PrintableHead(std::string_view text, std::size_t most);

}  // namespace VelSockTrace
