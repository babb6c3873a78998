// What the kernel knows of a connection.
#pragma once

namespace Posix {

// The stream's state, TCP_ESTABLISHED and so on; negative with errno when the kernel does not tell.
int TcpState(int descriptor) noexcept;

}  // namespace Posix
