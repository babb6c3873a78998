#include "settings/RegistryKey.h"

#include "Text/Utf8.h"
#include "Text/WideLength.h"

namespace Posix {

namespace {

unsigned short WithoutCase(unsigned short unit) noexcept {
    const bool upper = unit >= 'A' && unit <= 'Z';
    return upper ? static_cast<unsigned short>(unit + ('a' - 'A')) : unit;
}

}  // namespace

Name NameOf(const unsigned short* text) noexcept {
    return {text, text + Text::WideLength(text)};
}

bool IsNamed(Name wanted, std::string_view name) {
    const System::WideUnits units = Text::Utf16FromUtf8(name);
    const auto same = [](unsigned short left, unsigned short right) {
        return WithoutCase(left) == WithoutCase(right);
    };
    return std::equal(wanted.begin, wanted.end, units.begin(), units.end(), same);
}

}  // namespace Posix
