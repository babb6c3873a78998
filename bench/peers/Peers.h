// What a user could take instead of this library, a file each. Every function appends its cases to
// the rows that the library has; what a peer has no counterpart for is left out.
#pragma once

#include "harness/Work.h"

namespace Bench {

void AddAceCases(Cases& cases);
void AddAsioCases(Cases& cases);
void AddLibuvCases(Cases& cases);
void AddPocoCases(Cases& cases);
void AddSfmlCases(Cases& cases);
void AddSpdlogCases(Cases& cases);

// See Memory.h. ACE has nothing on the heap.
void PrintAsioMemory();
void PrintLibuvMemory();
void PrintPocoMemory();
void PrintSfmlMemory();

}  // namespace Bench
