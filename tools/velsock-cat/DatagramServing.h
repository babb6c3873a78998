// Answers datagrams.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "Arguments.h"
#include "Failure.h"

namespace VelSockCat {

// Returns what is sent back, if anything is.
using Answer = std::optional<std::string> (*)(std::string_view bytes);

// Serves until the count ends. That an answer does not arrive is its receiver's affair. Throws
// Failure, and what the library throws.
VelSockTools::ExitCode ServeDatagrams(const Arguments& arguments, Answer answer);

}  // namespace VelSockCat
