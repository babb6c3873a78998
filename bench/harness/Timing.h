// How long each case's operations take.
#pragma once

#include "Work.h"

namespace Bench {

// Prints for each case "ROW SUBJECT nanoseconds N", the median of one operation, and "ROW SUBJECT
// ratio LOWER MEDIAN UPPER", the quartiles of its time over that of the row's first case in the
// same repetition. All cases of a row take turns in each repetition, so that a slow moment of the
// machine hits all of them, and the fastest of a few runs counts.
void TimeCases(const Cases& cases);

}  // namespace Bench
