// Asks the questions and prints the answers.
#pragma once

#include "Arguments.h"
#include "Failure.h"

namespace VelSockResolve {

// Asks the question of each operand, or of each line of standard input, and prints the answers. A
// failure is reported at once and the remaining questions are still asked; returns the exit code of
// the first failure. Throws Failure with LocalFailure.
VelSockTools::ExitCode AskAndAnswer(const Arguments& arguments);

}  // namespace VelSockResolve
