// Transfers over a connection, with failures as the program tells them.
#pragma once

#include <VelNet/Socket.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "Pace.h"
#include "Traffic.h"

namespace VelSockCat {

using Block = std::array<char, 65536>;

// Waits for bytes and returns their number, or 0 if the peer has ended its direction. All
// functions throw Failure from TransferFailure.
std::size_t ReceiveSome(VelNet::Socket& socket, Block& block);

// Sends all of the bytes.
void SendAll(VelNet::Socket& socket, std::string_view bytes, Pace& pace);

// The same, and counts them as they leave. Also throws what Traffic::Sent throws.
void SendAll(VelNet::Socket& socket, std::string_view bytes, Pace& pace, Traffic& traffic);

}  // namespace VelSockCat
