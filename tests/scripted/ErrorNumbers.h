// The numbers that tests of failures run through.
#pragma once

#include <vector>

namespace Scripted {

// Every number that the table of socket errors knows, and numbers around and far from them: 0,
// negative ones, ones without the offset 10000, ones that only look alike in their low 16 bits.
std::vector<int> ErrorNumbers();

}  // namespace Scripted
