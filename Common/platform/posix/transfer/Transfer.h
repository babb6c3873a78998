// What the calls that move bytes have in common.
#pragma once

#include "errors/WinsockError.h"

#include <cstddef>

namespace Posix {

// What is wrong with a transfer whatever its socket, or 0.
inline int TransferError(int length, int flags) noexcept {
    if (length < 0) return WinsockError::Fault;
    return flags != 0 ? WinsockError::OperationNotSupported : 0;
}

inline std::size_t Size(int length) noexcept {
    return static_cast<std::size_t>(length);
}

}  // namespace Posix
