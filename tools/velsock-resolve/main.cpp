// velsock-resolve: shows the results of the library's resolvers on this host.

#include <VelNet/SocketInitialization.h>

#include <optional>
#include <string>
#include <vector>

#include "Answers.h"
#include "Arguments.h"
#include "Doctor.h"
#include "Events.h"
#include "Failure.h"
#include "Help.h"
#include "LogOption.h"
#include "Program.h"
#include "StandardStreams.h"

namespace {

using namespace VelSockResolve;
using VelSockTools::ExitCode;

ExitCode Print(const char* text) {
    VelSockTools::WriteOutput(text);
    return ExitCode::InOrder;
}

ExitCode Run(const std::vector<std::string>& words) {
    const Arguments arguments = ParseArguments(words);
    if (arguments.command == Command::Help) return Print(HelpText());
    if (arguments.command == Command::Version) return Print(VersionText());
    if (arguments.verbose) VelSockTools::BeVerbose();
    std::optional<VelLogging::Logging> logging;
    if (arguments.log) logging = VelSockTools::StartLogging("velsock-resolve", *arguments.log);
    const VelNet::SocketInitialization sockets;
    return arguments.command == Command::Doctor ? Examine(arguments.json) : AskAndAnswer(arguments);
}

}  // namespace

int main(int count, char** words) {
    return VelSockTools::RunProgram("velsock-resolve", Run, count, words);
}
