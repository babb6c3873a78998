// What a process has of the system's things, before and after a test.
#pragma once

#include <string>

namespace Support {

void NoteProcess();

// What differs from what was noted last: empty if nothing does.
std::string DifferenceOfProcess();

}  // namespace Support
