// Counts the memory requests of the whole process.
#pragma once

// How often malloc, calloc, realloc or aligned_alloc was called so far, operator new included,
// whichever module called.
unsigned long CountedAllocations() noexcept;
