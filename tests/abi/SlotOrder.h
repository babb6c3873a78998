// Reads where a virtual function stands in its class's table.
#pragma once

#include <cstddef>
#include <cstring>

namespace Abi {

// The slot of a virtual member function, in pointers from the start of the table. On the systems
// with the common C++ ABI a pointer to a virtual member holds that offset in bytes, plus one.
template <class Member>
std::size_t SlotOf(Member member) {
    std::size_t word = 0;
    static_assert(sizeof member >= sizeof word);
    std::memcpy(&word, &member, sizeof word);
    return (word - 1) / sizeof(void*);
}

}  // namespace Abi
