// What the scripts can tell a host to do.
#pragma once

#include <string>
#include <vector>

#include "Host.h"

namespace Network {

using Words = std::vector<std::string>;

// Carries out one command, its name first, and returns the words to answer, if any. What the
// library throws passes out; a command that does not exist or that cannot be carried out throws
// std::runtime_error.
Words CarryOut(Host& host, const Words& words);

}  // namespace Network
