// The commands: what each is called, what it takes, and what does it. Each has a source of its own.
#pragma once

#include <string>

#include "Arguments.h"
#include "Failure.h"

namespace VelSockCat {

// What a command's operands are.
enum class Operands { Port, HostAndPort, MaybeHostAndPort, TwoEnds, HostAndPorts, Error };

// Returns InOrder, or the code of a failure that has been told already. Throws Failure, and what
// the library throws.
using RunCommand = VelSockTools::ExitCode (*)(const Arguments& arguments);

struct CommandRow {
    const char* name;
    Command command;
    Operands operands;
    const char* operandNames;
    bool systemMayChoosePort;
    bool usesSockets;
    RunCommand run;
};

// Throws Failure with WrongUsage if no command has the name.
const CommandRow& RowOf(const std::string& name);
const CommandRow& RowOf(Command command);

VelSockTools::ExitCode Listen(const Arguments& arguments);
VelSockTools::ExitCode Connect(const Arguments& arguments);
VelSockTools::ExitCode SendDatagrams(const Arguments& arguments);
VelSockTools::ExitCode ReceiveDatagrams(const Arguments& arguments);
VelSockTools::ExitCode Relay(const Arguments& arguments);
VelSockTools::ExitCode Echo(const Arguments& arguments);
VelSockTools::ExitCode Discard(const Arguments& arguments);
VelSockTools::ExitCode Chargen(const Arguments& arguments);
VelSockTools::ExitCode TestPorts(const Arguments& arguments);
VelSockTools::ExitCode Explain(const Arguments& arguments);

}  // namespace VelSockCat
