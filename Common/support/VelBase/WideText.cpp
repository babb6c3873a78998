#include "VelBase/WideText.h"

#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/LengthLimit.h"

namespace VelBase {

WideText::WideText() : units_(1) {}

void WideText::RequireRoomFor(std::size_t more) const {
    RequireRoom(Length(), more, units_.max_size() - 1, StringTooLong);
}

void WideText::Reserve(std::size_t units) {
    RequireRoom(0, units, units_.max_size() - 1, StringTooLong);
    units_.reserve(units + 1);
}

WideText& WideText::Append(const unsigned short* text) {
    return Append(text, Text::WideLength(text));
}

WideText& WideText::Append(const unsigned short* units, std::size_t count) {
    RequireRoomFor(count);
    units_.insert(units_.end() - 1, units, units + count);
    return *this;
}

WideText& WideText::Append(unsigned short unit) {
    return Append(&unit, 1);
}

WideText& WideText::AppendUtf8(std::string_view text) {
    RequireRoomFor(text.size());
    const std::size_t start = Length();
    units_.resize(units_.size() + text.size());
    unsigned short* const end = Text::PutUtf16(units_.data() + start, text);
    *end = 0;
    units_.resize(static_cast<std::size_t>(end - units_.data()) + 1);
    return *this;
}

}  // namespace VelBase
