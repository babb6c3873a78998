#include "WideTexts.h"

#include "Text/WideLength.h"

static_assert(sizeof(wchar_t) == sizeof(unsigned short));

std::wstring Windows::SystemText(const unsigned short* text) {
    return SystemText(text, Text::WideLength(text));
}

std::wstring Windows::SystemText(const unsigned short* units, std::size_t count) {
    return {units, units + count};
}

System::WideUnits Windows::OwnText(const wchar_t* units, std::size_t count) {
    return {units, units + count};
}
