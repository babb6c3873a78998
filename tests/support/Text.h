// Texts of the library as tests compare, pass and print them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Support {

// A wide text as u"…" compares and prints it: EXPECT_EQ(Text(exception.GetMessage()), u"…"). A null
// text gives u"(null)".
inline std::u16string Text(const unsigned short* text) {
    if (text == nullptr) return u"(null)";
    std::u16string units;
    for (; *text != 0; ++text)
        units += static_cast<char16_t>(*text);
    return units;
}

// ASCII only.
inline std::u16string Widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

// The units with a terminator: Wide(u"text").data() can be passed wherever a wide text is asked
// for.
inline std::vector<unsigned short> Wide(std::u16string_view text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

// The same from ASCII.
inline std::vector<unsigned short> Wide(const char* text) {
    return Wide(Widen(text));
}

// Printable ASCII stays; every other unit is shown as its number, "<10061>".
inline std::string Narrow(const unsigned short* text) {
    std::string narrow;
    for (; *text != 0; ++text) {
        if (*text >= ' ' && *text <= '~')
            narrow += static_cast<char>(*text);
        else
            narrow.append("<").append(std::to_string(*text)).append(">");
    }
    return narrow;
}

// How every failure text with a system error ends: the number as one unit, then its description.
inline std::u16string ErrorTail(int number, std::u16string_view description) {
    std::u16string tail = u", errno = ";
    tail += static_cast<char16_t>(number);
    return tail.append(u" ").append(description);
}

}  // namespace Support
