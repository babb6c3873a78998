// What an open socket takes of the heap.
#pragma once

namespace Bench {

// Prints "memory SUBJECT bytes N", the bytes of one open socket with the heap's own, for each of
// the library's kinds. What the library keeps in tables that exist from the start is not in it.
void PrintSocketMemory();

}  // namespace Bench
