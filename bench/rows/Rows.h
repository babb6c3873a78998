// The rows of the measurement, a file each. Every function appends its cases.
#pragma once

#include "harness/Work.h"

namespace Bench {

void AddTransferRows(Cases& cases);
void AddCreationRows(Cases& cases);
void AddConnectionRows(Cases& cases);
void AddDatagramRows(Cases& cases);
void AddNameRows(Cases& cases);
void AddSelectionRows(Cases& cases);
void AddFailureRows(Cases& cases);
void AddRecordRows(Cases& cases);
// Opens 10,000 sockets: not to be played beside others.
void AddPortRows(Cases& cases);

// All but the last.
void AddPlainRows(Cases& cases);

}  // namespace Bench
