// Narrow texts as callers give them.
#pragma once

namespace VelNet {

// Null counts as the empty text.
inline const char* OrEmpty(const char* text) noexcept {
    return text != nullptr ? text : "";
}

}  // namespace VelNet
