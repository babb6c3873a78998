#include "VelBase/TextRoom.h"

#include <new>
#include <utility>

namespace VelBase {

TextRoom::TextRoom(std::size_t size) {
    text_.text_ = new char[size]{};
}

ReturnString TextRoom::HandOver() noexcept {
    try {
        return text_;
    } catch (const std::bad_alloc&) {
        return std::move(text_);
    }
}

}  // namespace VelBase
