// Shared by the two owners of strings.
#pragma once

#include <algorithm>
#include <cstddef>

namespace VelBase {

template <class Unit>
inline constexpr Unit EmptyText[1] = {};

// Returns a heap copy up to and including the first zero; null for a null or empty string.
template <class Unit>
Unit* CopyText(const Unit* text) {
    if (text == nullptr || *text == 0) return nullptr;
    std::size_t units = 1;
    while (text[units - 1] != 0)
        ++units;
    Unit* const copy = new Unit[units];
    std::copy_n(text, units, copy);
    return copy;
}

}  // namespace VelBase
