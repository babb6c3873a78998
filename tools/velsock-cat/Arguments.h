// The command line.
#pragma once

#include <VelNet/SocketXt.h>

#include <optional>
#include <string>
#include <vector>

namespace VelSockCat {

enum class Command {
    Help,
    Version,
    Listen,
    Connect,
    UdpSend,
    UdpListen,
    Broadcast,
    Multicast,
    Relay,
    Echo,
    Discard,
    Chargen,
    Ports,
    Explain,
};

enum class SocketFamily { Extended, Classic };

// The direction in which bytes are transferred.
enum class Direction { Both, SendOnly, ReceiveOnly };

// How long to wait for the peer after standard input has ended.
struct Patience {
    bool forever;
    unsigned int milliseconds;
};

struct PortRange {
    unsigned short first;
    unsigned short last;
};

struct Arguments {
    Command command = Command::Help;
    std::optional<SocketFamily> chosenFamily;
    // Of extended sockets; that of the local host's name if unknown.
    VelNet::SocketXt::ADDR_FAMILY version = VelNet::SocketXt::FAMILY_UNKNOWN;
    std::optional<std::string> host;  // the loopback address if omitted
    unsigned short port = 0;
    Direction direction = Direction::Both;
    bool reuseAddress = false;
    bool showSenders = false;
    bool verbose = false;
    unsigned int datagramSize = 1400;
    std::optional<unsigned int> datagramCount;
    std::vector<std::string> categories;  // of the log, by the library's names
    std::optional<std::string> logFile;
    std::optional<std::string> log;              // the text of --log
    std::optional<unsigned int> receiveTimeout;  // milliseconds
    std::optional<unsigned int> sendTimeout;     // milliseconds
    std::optional<unsigned int> connectTimeout;  // milliseconds
    std::optional<unsigned int> acceptTimeout;   // milliseconds
    bool endsWithInput = false;
    std::optional<Patience> quitAfter;
    std::optional<unsigned int> answers;
    bool keepsAccepting = false;
    bool usesDatagrams = false;
    bool showsBytes = false;
    bool showsTotals = false;
    bool tellsInJson = false;
    std::optional<unsigned int> rate;  // bytes per second
    std::string targetHost;            // of a relay
    unsigned short targetPort = 0;
    std::vector<PortRange> ports;  // to test
    std::string explained;         // an error, as it was asked for

    SocketFamily Family() const { return chosenFamily.value_or(SocketFamily::Extended); }
};

// Parses the arguments, without the program's name. Throws Failure with WrongUsage.
Arguments ParseArguments(const std::vector<std::string>& words);

}  // namespace VelSockCat
