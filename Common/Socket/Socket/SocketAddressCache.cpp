#include "VelNet/SocketAddressCache.h"

namespace VelNet {

SocketAddressCache::SocketAddressCache() = default;
SocketAddressCache::SocketAddressCache(const SocketAddressCache& other) = default;
SocketAddressCache& SocketAddressCache::operator=(const SocketAddressCache& other) = default;
SocketAddressCache::~SocketAddressCache() = default;

}  // namespace VelNet
