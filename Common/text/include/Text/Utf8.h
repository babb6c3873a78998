// Between UTF-8, which all texts of the system are taken to be, and UTF-16. Broken input becomes
// U+FFFD.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Posix {

std::vector<unsigned short> WideFromUtf8(std::string_view text);
std::string Utf8FromWide(const unsigned short* units, std::size_t count);

}  // namespace Posix
