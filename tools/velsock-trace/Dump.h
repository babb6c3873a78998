// Bytes for people.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VelSockTrace {

// Lines of text, each after a margin; what could control a terminal is shown as \x1B.
std::string TextDump(std::string_view bytes);

// Lines of offset, sixteen bytes and their characters.
std::string HexDump(std::string_view bytes, std::uint64_t offset);

}  // namespace VelSockTrace
