#include "Arguments.h"
#include "Capture.h"
#include "Help.h"
#include "Listing.h"
#include "Page.h"
#include "Program.h"
#include "Show.h"
#include "StandardStreams.h"

namespace {

using VelSockTools::ExitCode;
using namespace VelSockTrace;

// What is written takes the place of what would be printed.
void Answer(const Arguments& arguments) {
    if (!arguments.capture.empty()) WriteCapture(arguments);
    if (!arguments.page.empty()) WritePage(arguments);
    if (!arguments.capture.empty() || !arguments.page.empty()) return;
    arguments.command == Command::Show ? Show(arguments) : List(arguments);
}

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
        case Command::Show:
            Answer(arguments);
            break;
    }
    return ExitCode::InOrder;
}

}  // namespace

int main(int count, char** words) {
    return VelSockTools::RunProgram("velsock-trace", Work, count, words);
}
