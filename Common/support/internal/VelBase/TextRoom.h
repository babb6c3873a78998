// Room for a narrow text that is yet to come.
#pragma once

#include "VelBase/ReturnString.h"

#include <cstddef>

namespace VelBase {

// Takes the memory of a text before the text is known, so that handing it over cannot fail.
class TextRoom {
public:
    // So many bytes, the terminator included. Throws std::bad_alloc.
    explicit TextRoom(std::size_t size);

    // Where the text belongs; an empty one to begin with.
    char* Begin() noexcept { return text_.text_; }

    // The text that was put there: a copy without the room that it left, or where there is no
    // memory for one the room itself, which is gone then.
    ReturnString HandOver() noexcept;

private:
    ReturnString text_;
};

}  // namespace VelBase
