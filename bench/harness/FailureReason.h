// What went wrong, for people.
#pragma once

#include <string>

namespace Bench {

// Of the exception that is being handled: this library's, or a standard one.
std::string FailureReason();

}  // namespace Bench
