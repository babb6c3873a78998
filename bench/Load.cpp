// Loads a module, binding all its symbols, while callgrind counts.
//
//   bench_load MODULE

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "harness/Marks.h"

int main(int count, char** words) {
    if (count != 2) return EXIT_FAILURE;
    Bench::BeginInstructions();
    const void* const module = ::dlopen(words[1], RTLD_NOW);
    Bench::EndInstructions();
    if (module != nullptr) return EXIT_SUCCESS;
    std::fprintf(stderr, "bench: %s\n", ::dlerror());
    return EXIT_FAILURE;
}
