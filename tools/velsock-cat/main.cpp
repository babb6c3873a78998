// velsock-cat: carries one connection over standard input and output, for trying out and diagnosing
// what the library does with a peer.

#include <VelNet/SocketInitialization.h>

#include <exception>
#include <string>
#include <vector>

#include "Arguments.h"
#include "Connection.h"
#include "Exchange.h"
#include "Failure.h"
#include "Help.h"
#include "StandardStreams.h"
#include "Tracing.h"

namespace {

using namespace VelSockCat;

void CarryConnection(const Arguments& arguments) {
    const Tracing tracing(arguments);
    try {
        const VelNet::SocketInitialization sockets;
        const auto socket = OpenConnection(arguments);
        Exchange(*socket, arguments.direction);
    } catch (const VelNet::Exception& exception) {
        throw Failure(ExitCode::NotConnected, exception);
    }
}

void Run(const Arguments& arguments) {
    switch (arguments.command) {
        case Command::Help:
            return WriteOutput(HelpText());
        case Command::Version:
            return WriteOutput(VersionText());
        case Command::Listen:
        case Command::Connect:
            return CarryConnection(arguments);
    }
}

ExitCode RunAndReport(const std::vector<std::string>& words) {
    try {
        PrepareStandardStreams();
        Run(ParseArguments(words));
        return ExitCode::InOrder;
    } catch (const Failure& failure) {
        return Report(failure);
    } catch (const std::exception& exception) {
        return Report(Failure(ExitCode::LocalFailure, exception.what()));
    }
}

}  // namespace

int main(int count, char** words) {
    // A caller may leave out even the program's name.
    const int first = count > 0 ? 1 : 0;
    return static_cast<int>(RunAndReport({words + first, words + count}));
}
