#include "WideTexts.h"

static_assert(sizeof(wchar_t) == sizeof(unsigned short));

std::wstring Windows::SystemText(const unsigned short* text) {
    std::size_t count = 0;
    while (text[count] != 0)
        ++count;
    return SystemText(text, count);
}

std::wstring Windows::SystemText(const unsigned short* units, std::size_t count) {
    return {units, units + count};
}

System::WideUnits Windows::OwnText(const wchar_t* units, std::size_t count) {
    return {units, units + count};
}
