// Narrow strings that callers pass.
#pragma once

namespace VelNet {

// Returns the empty string for null.
inline const char* OrEmpty(const char* text) noexcept {
    return text != nullptr ? text : "";
}

}  // namespace VelNet
