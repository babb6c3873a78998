// The command listen.
#include "Commands.h"
#include "Exchange.h"
#include "Serving.h"

namespace VelSockCat {

namespace {

void ExchangeWith(Accepted& peer, Traffic& traffic, const Arguments& arguments) {
    Exchange(*peer.socket, arguments, traffic);
}

}  // namespace

// Of many connections none would know which of them standard input is for.
VelSockTools::ExitCode Listen(const Arguments& arguments) {
    if (!arguments.keepsAccepting)
        return ServeConnections(arguments, Crowd::OneByOne, ExchangeWith);
    Arguments receiving = arguments;
    receiving.direction = Direction::ReceiveOnly;
    return ServeConnections(receiving, Crowd::OneByOne, ExchangeWith);
}

}  // namespace VelSockCat
