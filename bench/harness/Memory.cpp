#include "Memory.h"

#include "LibrarySockets.h"

void Bench::PrintSocketMemory() {
    PrintMemoryOf("library", CreateStream);
    PrintMemoryOf("library-extended", CreateExtendedStream);
}
