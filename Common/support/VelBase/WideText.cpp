#include "VelBase/WideText.h"

#include "Platform/System.h"
#include "Text/Ascii.h"
#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/LengthLimit.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace VelBase {

WideText::WideText(std::size_t room) {
    RequireRoom(0, room, units_.max_size() - 1, StringTooLong);
    units_.reserve(room + 1);
    units_.push_back(0);
}

unsigned short* WideText::Extend(std::size_t count) {
    const std::size_t start = Length();
    RequireRoom(start, count, units_.max_size() - 1, StringTooLong);
    units_.resize(start + count + 1);
    return units_.data() + start;
}

WideText& WideText::Append(const unsigned short* text) {
    return Append(text, Text::WideLength(text));
}

WideText& WideText::Append(const unsigned short* units, std::size_t count) {
    std::copy_n(units, count, Extend(count));
    return *this;
}

WideText& WideText::Append(unsigned short unit) {
    return Append(&unit, 1);
}

WideText& WideText::AppendUtf8(std::string_view text) {
    const unsigned short* const end = Text::PutUtf16(Extend(text.size()), text);
    units_.resize(static_cast<std::size_t>(end - units_.data()) + 1);
    return *this;
}

WideText& WideText::AppendMultiByte(std::string_view text) {
    // ASCII is the same in every code page.
    if (Text::IsAscii(text)) return AppendUtf8(text);
    return Append(System::WideFromCodePage(text.data(), text.size()));
}

WideText& WideText::AppendDecimal(int number) {
    char digits[std::numeric_limits<int>::digits10 + 2];  // with the sign
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return AppendUtf8({digits, end});
}

}  // namespace VelBase
