// The command discard: reads what comes, and no more.
#include "Commands.h"
#include "DatagramServing.h"
#include "Serving.h"
#include "Streams.h"

namespace VelSockCat {

namespace {

void DiscardStream(Accepted& peer, Traffic& traffic, const Arguments&) {
    Block block;
    while (const std::size_t count = ReceiveSome(*peer.socket, block))
        traffic.Received({block.data(), count});
}

std::optional<std::string> DiscardDatagram(std::string_view) {
    return {};
}

}  // namespace

VelSockTools::ExitCode Discard(const Arguments& arguments) {
    if (arguments.usesDatagrams) return ServeDatagrams(arguments, DiscardDatagram);
    return ServeConnections(arguments, Crowd::AtOnce, DiscardStream);
}

}  // namespace VelSockCat
