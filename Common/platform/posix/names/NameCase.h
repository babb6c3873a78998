// Compares names without case in ASCII letters only, whatever the process's locale is.
#pragma once

#include <algorithm>
#include <string_view>

namespace Posix {

constexpr char LowerCase(char letter) noexcept {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

inline bool SameName(std::string_view left, std::string_view right) noexcept {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return LowerCase(one) == LowerCase(other); });
}

}  // namespace Posix
