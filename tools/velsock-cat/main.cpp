// velsock-cat: connects standard input and output to a connection or to datagrams, to try out and
// diagnose what the library does with a peer.

#include <VelNet/SocketInitialization.h>

#include <string>
#include <vector>

#include "Arguments.h"
#include "Connection.h"
#include "Datagrams.h"
#include "Exchange.h"
#include "Failure.h"
#include "Help.h"
#include "Program.h"
#include "StandardStreams.h"
#include "Tracing.h"

namespace {

using namespace VelSockCat;

void CarryConnection(const Arguments& arguments) {
    const auto socket = OpenConnection(arguments);
    Exchange(*socket, arguments);
}

void UseSockets(const Arguments& arguments, void (*use)(const Arguments&)) {
    if (arguments.verbose) VelSockTools::BeVerbose();
    const Tracing tracing(arguments);
    const VelNet::SocketInitialization sockets;
    use(arguments);
}

void Run(const Arguments& arguments) {
    switch (arguments.command) {
        case Command::Help:
            return VelSockTools::WriteOutput(HelpText());
        case Command::Version:
            return VelSockTools::WriteOutput(VersionText());
        case Command::Listen:
        case Command::Connect:
            return UseSockets(arguments, CarryConnection);
        case Command::UdpSend:
        case Command::Broadcast:
            return UseSockets(arguments, SendDatagrams);
        case Command::UdpListen:
        case Command::Multicast:
            return UseSockets(arguments, ReceiveDatagrams);
    }
}

VelSockTools::ExitCode RunWords(const std::vector<std::string>& words) {
    Run(ParseArguments(words));
    return VelSockTools::ExitCode::InOrder;
}

}  // namespace

int main(int count, char** words) {
    return VelSockTools::RunProgram("velsock-cat", RunWords, count, words);
}
