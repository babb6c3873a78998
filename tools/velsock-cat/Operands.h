// What follows the command's name.
#pragma once

#include <string>
#include <vector>

#include "Arguments.h"
#include "Commands.h"

namespace VelSockCat {

// Throws Failure with WrongUsage.
void TakeOperands(Arguments& arguments, const CommandRow& row,
                  const std::vector<std::string>& words);

}  // namespace VelSockCat
