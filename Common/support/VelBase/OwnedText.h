// Shared by the two owners of strings.
#pragma once

#include <algorithm>
#include <cstddef>

namespace VelBase {

template <class Unit>
inline constexpr Unit EmptyText[1] = {};

// Returns a heap copy of that many units and their terminator; null for an empty string.
template <class Unit>
Unit* CopyText(const Unit* text, std::size_t length) {
    if (length == 0) return nullptr;
    Unit* const copy = new Unit[length + 1];
    std::copy_n(text, length + 1, copy);
    return copy;
}

}  // namespace VelBase
