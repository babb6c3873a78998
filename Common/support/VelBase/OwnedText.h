// What the two owners of a text have in common.
#pragma once

#include <algorithm>
#include <cstddef>

namespace VelBase {

template <class Unit>
inline constexpr Unit EmptyText[1] = {};

// A copy on the heap up to and including the first zero; null for a null or an empty text.
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
