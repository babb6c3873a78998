#include "soak/Usage.h"

#include <malloc.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace Soak {

namespace {

double AllocatedBytes() {
    const struct mallinfo2 heap = ::mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

double ResidentBytes() {
    std::ifstream file("/proc/self/smaps_rollup");
    for (std::string word; file >> word;) {
        double kibibytes = 0;
        if (word == "Rss:" && file >> kibibytes) return 1024 * kibibytes;
    }
    throw std::runtime_error("no resident memory in /proc/self/smaps_rollup");
}

// The listing has one of its own.
double Descriptors() {
    const std::filesystem::directory_iterator listing("/proc/self/fd");
    return static_cast<double>(std::distance(begin(listing), end(listing))) - 1;
}

}  // namespace

Usage CurrentUsage() {
    return {AllocatedBytes(), ResidentBytes(), Descriptors()};
}

}  // namespace Soak
