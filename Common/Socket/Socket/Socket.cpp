#include "VelNet/Socket.h"

namespace VelNet {

Socket::Socket() = default;
Socket::Socket(const Socket& other) = default;
Socket& Socket::operator=(const Socket& other) = default;
Socket::~Socket() = default;

}  // namespace VelNet
