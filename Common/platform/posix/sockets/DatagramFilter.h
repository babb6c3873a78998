// Limits which datagrams the kernel puts into a socket's queue (SO_ATTACH_FILTER).
#pragma once

#include "sockets/KernelAddress.h"

namespace Posix {

// Accepts datagrams from this interface, or any if it is 0, and from this peer, or anybody if it is
// null. Replaces an earlier filter. Returns false with errno if the kernel refuses.
bool FilterDatagrams(int descriptor, unsigned int interface, const KernelAddress* peer) noexcept;

}  // namespace Posix
