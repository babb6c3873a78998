// What open sockets take of the heap.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <cstdio>
#include <vector>

namespace Bench {

// Prints "memory SUBJECT bytes N": what one open socket takes of the heap, what the heap adds
// included. A create function makes an open socket and returns its owner, which lives on the heap
// wholly, or whose own size counts.
template <class Create>
void PrintMemoryOf(const char* subject, const Create& create) {
    constexpr std::size_t sockets = 1'000;
    std::vector<decltype(create())> owners;
    owners.reserve(sockets);
    owners.push_back(create());
    const std::size_t before = ::mallinfo2().uordblks;
    while (owners.size() < sockets)
        owners.push_back(create());
    const std::size_t taken = ::mallinfo2().uordblks - before;
    std::printf("memory %s bytes %.1f\n", subject,
                static_cast<double>(taken) / static_cast<double>(sockets - 1));
}

// Of the library's kinds. What it keeps in tables that exist from the start is not in it.
void PrintSocketMemory();

}  // namespace Bench
