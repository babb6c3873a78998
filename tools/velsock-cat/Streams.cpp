#include "Streams.h"

#include <VelCompanion/Transfers.h>

#include "Transfer.h"

namespace VelSockCat {

namespace {

// Sends as much as may leave at once, and returns that.
std::string_view SendPortion(VelNet::Socket& socket, std::string_view bytes, Pace& pace) {
    const std::string_view portion = bytes.substr(0, pace.Portion(bytes.size()));
    pace.Await(portion.size());
    try {
        VelCompanion::SendAll(socket, portion);
    } catch (const VelNet::Exception& exception) {
        throw TransferFailure("cannot send to the peer", exception);
    }
    return portion;
}

}  // namespace

std::size_t ReceiveSome(VelNet::Socket& socket, Block& block) {
    try {
        return VelCompanion::ReceiveSome(socket, block.data(), block.size());
    } catch (const VelNet::Exception& exception) {
        throw TransferFailure("cannot receive from the peer", exception);
    }
}

void SendAll(VelNet::Socket& socket, std::string_view bytes, Pace& pace) {
    while (!bytes.empty())
        bytes.remove_prefix(SendPortion(socket, bytes, pace).size());
}

void SendAll(VelNet::Socket& socket, std::string_view bytes, Pace& pace, Traffic& traffic) {
    while (!bytes.empty()) {
        const std::string_view portion = SendPortion(socket, bytes, pace);
        traffic.Sent(portion);
        bytes.remove_prefix(portion.size());
    }
}

}  // namespace VelSockCat
