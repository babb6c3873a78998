// Which datagrams the kernel lets into a socket's queue.
#pragma once

#include "sockets/KernelAddress.h"

namespace Posix {

// Those that come in by the interface, unless that is 0, and from the peer, unless that is null.
// Takes the place of an earlier filter. False with errno when the kernel refuses.
bool FilterDatagrams(int descriptor, unsigned int interface, const KernelAddress* peer) noexcept;

}  // namespace Posix
