// Shared by the calls that transfer bytes.
#pragma once

#include "errors/WinsockError.h"

#include <cstddef>

namespace Posix {

// Returns the error of arguments that are invalid for every socket, or None.
inline WinsockError TransferError(int length, int flags) noexcept {
    if (length < 0) return WinsockError::Fault;
    return flags != 0 ? WinsockError::OperationNotSupported : WinsockError::None;
}

inline std::size_t Size(int length) noexcept {
    return static_cast<std::size_t>(length);
}

}  // namespace Posix
