#include "VelNet/SocketCollection.h"

namespace VelNet {

SocketCollection::SocketCollection() = default;
SocketCollection::SocketCollection(const SocketCollection& other) = default;
SocketCollection::SocketCollection(SocketCollection&& other) noexcept = default;
SocketCollection& SocketCollection::operator=(const SocketCollection&) = default;
SocketCollection& SocketCollection::operator=(SocketCollection&&) noexcept = default;

}  // namespace VelNet
