// The command echo: sends back what comes.
#include "Commands.h"
#include "DatagramServing.h"
#include "Serving.h"
#include "Streams.h"

namespace VelSockCat {

namespace {

void EchoStream(Accepted& peer, Traffic& traffic, const Arguments& arguments) {
    Block block;
    Pace pace(arguments.rate);
    while (const std::size_t count = ReceiveSome(*peer.socket, block)) {
        traffic.Received({block.data(), count});
        SendAll(*peer.socket, {block.data(), count}, pace, traffic);
    }
}

std::optional<std::string> EchoDatagram(std::string_view bytes) {
    return std::string(bytes);
}

}  // namespace

VelSockTools::ExitCode Echo(const Arguments& arguments) {
    if (arguments.usesDatagrams) return ServeDatagrams(arguments, EchoDatagram);
    return ServeConnections(arguments, Crowd::AtOnce, EchoStream);
}

}  // namespace VelSockCat
