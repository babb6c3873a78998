#include "Text/Ascii.h"

#include <type_traits>

namespace Text {
namespace {

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

}  // namespace Text
