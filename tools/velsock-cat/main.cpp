// velsock-cat: connects standard input and output to a connection or to datagrams, to try out and
// diagnose what the library does with a peer.

#include <VelNet/SocketInitialization.h>

#include <string>
#include <vector>

#include "Arguments.h"
#include "Commands.h"
#include "Events.h"
#include "Failure.h"
#include "Help.h"
#include "Program.h"
#include "StandardStreams.h"
#include "Tracing.h"

namespace {

using namespace VelSockCat;
using VelSockTools::ExitCode;

ExitCode Print(const char* text) {
    VelSockTools::WriteOutput(text);
    return ExitCode::InOrder;
}

ExitCode RunCommandOf(const Arguments& arguments) {
    const CommandRow& row = RowOf(arguments.command);
    if (arguments.tellsInJson) VelSockTools::TellInJson();
    if (arguments.verbose) VelSockTools::BeVerbose();
    if (!row.usesSockets) return row.run(arguments);
    const Tracing tracing(arguments);
    const VelNet::SocketInitialization sockets;
    return row.run(arguments);
}

ExitCode Run(const std::vector<std::string>& words) {
    const Arguments arguments = ParseArguments(words);
    if (arguments.command == Command::Help) return Print(HelpText());
    if (arguments.command == Command::Version) return Print(VersionText());
    return RunCommandOf(arguments);
}

}  // namespace

int main(int count, char** words) {
    return VelSockTools::RunProgram("velsock-cat", Run, count, words);
}
