// The command chargen: sends lines of all printable characters for as long as the peer takes them.
#include "Commands.h"
#include "DatagramServing.h"
#include "Serving.h"
#include "Streams.h"

namespace VelSockCat {

namespace {

using VelSockTools::ExitCode;
using VelSockTools::Failure;

constexpr int Characters = '~' - ' ' + 1;
constexpr int CharactersInLine = 72;

// Each line begins one character later than the one before, until the first one comes again.
std::string AllLines() {
    std::string lines;
    for (int line = 0; line < Characters; ++line) {
        for (int place = 0; place < CharactersInLine; ++place)
            lines += static_cast<char>(' ' + (line + place) % Characters);
        lines += "\r\n";
    }
    return lines;
}

// What the peer sends is discarded. Its end does not stop the lines: it may still read.
void DiscardWaiting(VelNet::Socket& socket, Traffic& traffic, Block& block) {
    if (!socket.IsDataAvailable()) return;
    if (const std::size_t count = ReceiveSome(socket, block))
        traffic.Received({block.data(), count});
}

void SendLinesForEver(Accepted& peer, Traffic& traffic, const Arguments& arguments) {
    const std::string lines = AllLines();
    Block block;
    for (Pace pace(arguments.rate);;) {
        SendAll(*peer.socket, lines, pace, traffic);
        DiscardWaiting(*peer.socket, traffic, block);
    }
}

// The peer ends this by closing the connection, which is not orderly while bytes are on their way.
void SendLines(Accepted& peer, Traffic& traffic, const Arguments& arguments) {
    try {
        SendLinesForEver(peer, traffic, arguments);
    } catch (const Failure& failure) {
        if (failure.Code() != ExitCode::ConnectionLost) throw;
    }
}

// The longest datagram of this service has 512 bytes.
std::optional<std::string> LinesInDatagram(std::string_view) {
    static const std::string lines = AllLines().substr(0, 512);
    return lines;
}

}  // namespace

ExitCode Chargen(const Arguments& arguments) {
    if (arguments.usesDatagrams) return ServeDatagrams(arguments, LinesInDatagram);
    return ServeConnections(arguments, Crowd::AtOnce, SendLines);
}

}  // namespace VelSockCat
