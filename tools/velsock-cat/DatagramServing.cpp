#include "DatagramServing.h"

#include <vector>

#include "Countdown.h"
#include "DatagramSocket.h"
#include "Pace.h"
#include "Traffic.h"

namespace VelSockCat {

VelSockTools::ExitCode ServeDatagrams(const Arguments& arguments, Answer answer) {
    const auto socket = OpenExtendedDatagrams(arguments);
    Traffic traffic(arguments);
    Pace pace(arguments.rate);
    std::vector<char> buffer(DatagramSocket::Room);
    for (Countdown countdown(arguments.datagramCount); countdown.Next();) {
        const Datagram datagram = socket->Receive(buffer.data());
        traffic.Received(datagram.bytes);
        const auto bytes = answer(datagram.bytes);
        if (!bytes) continue;
        pace.Await(bytes->size());
        socket->Answer(datagram, *bytes);
        traffic.Sent(*bytes);
    }
    return VelSockTools::ExitCode::InOrder;
}

}  // namespace VelSockCat
