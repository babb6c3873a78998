#include "VisibleText.h"

#include "Text/HexDigit.h"
#include "VelBase/WideLiteral.h"

#include <span>

namespace VelLog {

namespace {

using VelBase::operator""_wide;

bool IsControl(unsigned short unit) noexcept {
    return unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
}

bool IsSeparatorOrDirection(unsigned short unit) noexcept {
    return unit == 0x061C || unit == 0x200E || unit == 0x200F ||
           (unit >= 0x2028 && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
}

void AppendEscape(VelBase::WideText& text, unsigned short unit) {
    text.Append("\\u"_wide);
    for (int shift = 12; shift >= 0; shift -= 4) {
        text.Append(static_cast<unsigned char>(Text::HexDigit(unit >> shift)));
    }
}

// Whether the units are all printable ASCII, as in nearly all texts; then nothing has to be made
// visible. Looks at every unit without an early exit and without a bool, so that compilers
// vectorize the loop.
bool IsPrintableAscii(std::span<const unsigned short> units) noexcept {
    unsigned short others = 0;
    for (const unsigned short unit : units)
        others = static_cast<unsigned short>(others | (unit < 0x20) | (unit > 0x7E));
    return others == 0;
}

}  // namespace

VelBase::WideText MakeControlsVisible(VelBase::WideText text) {
    if (IsPrintableAscii({text.Units(), text.Length()})) return text;
    VelBase::WideText visible(text.Length());
    for (std::size_t index = 0; index < text.Length(); ++index) {
        const unsigned short unit = text.Units()[index];
        if (IsControl(unit) || IsSeparatorOrDirection(unit)) {
            AppendEscape(visible, unit);
        } else {
            visible.Append(unit);
        }
    }
    return visible;
}

}  // namespace VelLog
