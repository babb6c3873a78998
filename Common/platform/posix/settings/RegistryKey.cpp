#include "settings/RegistryKey.h"

#include "Text/Utf8.h"

namespace Posix {

namespace {

unsigned short WithoutCase(unsigned short unit) noexcept {
    const bool upper = unit >= 'A' && unit <= 'Z';
    return upper ? static_cast<unsigned short>(unit + ('a' - 'A')) : unit;
}

}  // namespace

Name NameOf(const unsigned short* text) noexcept {
    const unsigned short* end = text;
    while (*end != 0)
        ++end;
    return {text, end};
}

bool IsNamed(Name wanted, std::string_view name) {
    const System::WideUnits units = WideFromUtf8(name);
    const auto same = [](unsigned short left, unsigned short right) {
        return WithoutCase(left) == WithoutCase(right);
    };
    return std::equal(wanted.begin, wanted.end, units.begin(), units.end(), same);
}

}  // namespace Posix
