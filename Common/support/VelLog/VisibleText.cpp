#include "VisibleText.h"

#include "Text/Ascii.h"
#include "Text/HexDigit.h"
#include "VelBase/WideLiteral.h"

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

}  // namespace

VelBase::WideText MakeControlsVisible(VelBase::WideText text) {
    // Nearly always so.
    if (Text::IsPrintableAscii({text.Units(), text.Length()})) return text;
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
