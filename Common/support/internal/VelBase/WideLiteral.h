// Literals of wide strings.
#pragma once

#include <cstddef>

namespace VelBase {

// The units of an ASCII literal, widened at compile time.
template <std::size_t Size>
struct WideLiteral {
    unsigned short units[Size]{};

    consteval WideLiteral(const char (&text)[Size]) {
        for (std::size_t index = 0; index < Size; ++index) {
            const auto unit = static_cast<unsigned char>(text[index]);
            if (unit > 0x7F) throw "a wide literal holds ASCII only";
            units[index] = unit;
        }
    }
};

// "text"_wide is a pointer to a zero-terminated wide string in static storage.
template <WideLiteral Literal>
consteval const unsigned short* operator""_wide() noexcept {
    return Literal.units;
}

}  // namespace VelBase
