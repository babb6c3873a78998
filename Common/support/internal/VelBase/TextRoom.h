// Memory for a narrow string whose contents are not known yet.
#pragma once

#include "VelBase/ReturnString.h"

#include <cstddef>

namespace VelBase {

// Allocates the memory before the contents are known, so that returning the string cannot fail.
class TextRoom {
public:
    // The size is in bytes and includes the terminator. Throws std::bad_alloc.
    explicit TextRoom(std::size_t size);

    // Returns a copy of the text in that memory, which this object then no longer has. A text for
    // which it is too small gets memory of its own: std::bad_alloc if there is none.
    ReturnString HandOver(const char* text);

private:
    std::size_t size_;
    ReturnString text_;
};

}  // namespace VelBase
