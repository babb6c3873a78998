// A buffer for a narrow string whose contents are not known yet.
#pragma once

#include "VelBase/ReturnString.h"

#include <cstddef>

namespace VelBase {

// Allocates the memory before the contents are known, so that returning the string cannot fail.
class TextRoom {
public:
    // The size is in bytes and includes the terminator. Throws std::bad_alloc.
    explicit TextRoom(std::size_t size);

    // Returns the buffer, which holds an empty string at first.
    char* Begin() noexcept { return text_.text_; }

    // Returns the string in the buffer: a copy without the unused rest or, if there is no memory
    // for a copy, the buffer itself, which this object then no longer has.
    ReturnString HandOver() noexcept;

private:
    ReturnString text_;
};

}  // namespace VelBase
