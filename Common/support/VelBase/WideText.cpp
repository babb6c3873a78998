#include "VelBase/WideText.h"

#include "Platform/System.h"
#include "Text/Ascii.h"
#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/LengthLimit.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

namespace VelBase {

namespace {

constexpr std::size_t MaximumLength =
    std::numeric_limits<std::ptrdiff_t>::max() / sizeof(unsigned short) - 1;

std::unique_ptr<unsigned short[]> Allocate(std::size_t room) {
    RequireRoom(0, room, MaximumLength, StringTooLong);
    return std::make_unique_for_overwrite<unsigned short[]>(room + 1);
}

}  // namespace

WideText::WideText(std::size_t room) : room_(room), units_(Allocate(room)) {
    units_[0] = 0;
}

unsigned short* WideText::Extend(std::size_t count) {
    const std::size_t start = length_;
    if (count > room_ - start) Grow(count);
    SetLength(start + count);
    return &units_[start];
}

void WideText::Grow(std::size_t count) {
    RequireRoom(length_, count, MaximumLength, StringTooLong);
    const std::size_t room = std::min(std::max(2 * room_, length_ + count), MaximumLength);
    std::unique_ptr<unsigned short[]> grown = Allocate(room);
    std::copy_n(units_.get(), length_, grown.get());
    units_ = std::move(grown);
    room_ = room;
}

void WideText::SetLength(std::size_t length) noexcept {
    length_ = length;
    units_[length] = 0;
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
    SetLength(static_cast<std::size_t>(end - units_.get()));
    return *this;
}

WideText& WideText::AppendMultiByte(std::string_view text) {
    const std::size_t start = length_;
    // ASCII is the same in every code page.
    if (Text::PutAscii(Extend(text.size()), text) == text.size()) return *this;
    SetLength(start);
    return Append(System::WideFromCodePage(text.data(), text.size()));
}

WideText& WideText::AppendDecimal(int number) {
    char digits[std::numeric_limits<int>::digits10 + 2];  // with the sign
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return AppendUtf8({digits, end});
}

}  // namespace VelBase
