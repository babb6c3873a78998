#include "Arguments.h"
#include "Capture.h"
#include "Help.h"
#include "Listing.h"
#include "Program.h"
#include "Show.h"
#include "StandardStreams.h"

namespace {

using VelSockTools::ExitCode;
using namespace VelSockTrace;

ExitCode Work(const std::vector<std::string>& words) {
    const Arguments arguments = ParseArguments(words);
    switch (arguments.command) {
        case Command::Help:
            VelSockTools::WriteOutput(HelpText());
            break;
        case Command::Version:
            VelSockTools::WriteOutput(VersionText());
            break;
        case Command::List:
            arguments.capture.empty() ? List(arguments) : WriteCapture(arguments);
            break;
        case Command::Show:
            arguments.capture.empty() ? Show(arguments) : WriteCapture(arguments);
            break;
    }
    return ExitCode::InOrder;
}

}  // namespace

int main(int count, char** words) {
    return VelSockTools::RunProgram("velsock-trace", Work, count, words);
}
