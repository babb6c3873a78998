// The records' hexadecimal form of bytes: two digits for a byte below 80, and FFFFFF before the two
// of any other, "FFFFFF80" for one.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace VelSockTrace {

// Decodes bytes until there are so many, or until something else follows. Leaves out the first
// ones.
std::string DecodeBytes(std::string_view digits, std::uint64_t skipped, std::uint64_t most);

}  // namespace VelSockTrace
