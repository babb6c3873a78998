#include "VelBase/TextRoom.h"

#include <cstring>
#include <utility>

namespace VelBase {

TextRoom::TextRoom(std::size_t size) : size_(size) {
    text_.text_ = new char[size];
}

ReturnString TextRoom::HandOver(const char* text) {
    const std::size_t needed = std::strlen(text) + 1;
    if (needed > std::exchange(size_, 0)) return {text};
    std::memcpy(text_.text_, text, needed);
    return std::move(text_);
}

}  // namespace VelBase
