#include "Text/Ascii.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

namespace Text {
namespace {

// As many characters as a register holds.
constexpr std::size_t BlockSize = sizeof(std::uint64_t);

bool IsAsciiBlock(const char* text) noexcept {
    std::uint64_t characters = 0;
    std::memcpy(&characters, text, BlockSize);
    return (characters & 0x8080'8080'8080'8080U) == 0;
}

// A loop of fixed length, which compilers turn into a few vector instructions.
void WidenBlock(const char* text, unsigned short* units) noexcept {
    for (std::size_t index = 0; index < BlockSize; ++index)
        units[index] = static_cast<unsigned char>(text[index]);
}

// Looks at every unit without an early exit, so that compilers vectorize the loop.
template <class Units>
bool AreAllAscii(const Units& units) noexcept {
    using Unit = typename Units::value_type;
    Unit all = 0;
    for (const Unit unit : units)
        all = static_cast<Unit>(all | unit);
    return static_cast<std::make_unsigned_t<Unit>>(all) < 0x80;
}

}  // namespace

bool IsAscii(std::string_view text) noexcept {
    return AreAllAscii(text);
}

bool IsAscii(std::span<const unsigned short> units) noexcept {
    return AreAllAscii(units);
}

bool IsPrintableAscii(std::span<const unsigned short> units) noexcept {
    unsigned short others = 0;
    for (const unsigned short unit : units)
        others = static_cast<unsigned short>(others | (unit < 0x20) | (unit > 0x7E));
    return others == 0;
}

std::size_t PutAscii(unsigned short* units, std::string_view text) noexcept {
    std::size_t count = 0;
    for (; text.size() - count >= BlockSize && IsAsciiBlock(&text[count]); count += BlockSize)
        WidenBlock(&text[count], &units[count]);
    for (; count < text.size() && static_cast<unsigned char>(text[count]) < 0x80; ++count)
        units[count] = static_cast<unsigned char>(text[count]);
    return count;
}

}  // namespace Text
