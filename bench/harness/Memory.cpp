#include "Memory.h"

#include <malloc.h>

#include <cstddef>
#include <cstdio>
#include <vector>

#include "LibrarySockets.h"

namespace Bench {
namespace {

constexpr std::size_t OpenSockets = 1'000;

template <class Owner>
void PrintMemoryOf(const char* subject, Owner (*create)()) {
    std::vector<Owner> sockets;
    sockets.reserve(OpenSockets);
    sockets.push_back(create());
    const std::size_t before = ::mallinfo2().uordblks;
    while (sockets.size() < OpenSockets)
        sockets.push_back(create());
    const std::size_t taken = ::mallinfo2().uordblks - before;
    std::printf("memory %s bytes %.1f\n", subject,
                static_cast<double>(taken) / static_cast<double>(OpenSockets - 1));
}

}  // namespace

void PrintSocketMemory() {
    PrintMemoryOf("library", CreateStream);
    PrintMemoryOf("library-extended", CreateExtendedStream);
}

}  // namespace Bench
