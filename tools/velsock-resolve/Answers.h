// What is told of each question.
#pragma once

#include "Arguments.h"
#include "Failure.h"

namespace VelSockResolve {

// Asks each operand's question, or those that standard input holds, and prints the answers. A
// failure is told at once and does not keep the rest from being asked; the result is the exit code
// of the first. Throws Failure with LocalFailure.
VelSockTools::ExitCode AskAndAnswer(const Arguments& arguments);

}  // namespace VelSockResolve
