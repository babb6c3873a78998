// The two settings of a run, from the environment: MUTANT, the number of the mutant to live, and
// MUTANT_REACH, a file with a byte for each mutant, shared with child processes.
#include "mutation.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace {

unsigned char unread[1 << 16];

unsigned char* Map(int file) {
    struct stat status = {};
    if (::fstat(file, &status) != 0) return nullptr;
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const bytes = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    return bytes != MAP_FAILED ? static_cast<unsigned char*>(bytes) : nullptr;
}

void KeepReachIn(const char* path) {
    const int file = ::open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) return;
    if (unsigned char* const bytes = Map(file); bytes != nullptr) mutation::reached = bytes;
    ::close(file);
}

// Before all other initializers, some of which are mutated.
__attribute__((constructor(101))) void ReadSettings() {
    if (const char* const mutant = std::getenv("MUTANT")) mutation::active = std::atoi(mutant);
    if (const char* const path = std::getenv("MUTANT_REACH")) KeepReachIn(path);
}

}  // namespace

constinit int mutation::active = -1;
constinit unsigned char* mutation::reached = unread;
