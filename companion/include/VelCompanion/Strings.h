// Between the library's strings and the standard library's.
//
// The library's narrow strings are UTF-8, with the exception that SocketXt.h names; its wide ones
// are UTF-16. A std::wstring is UTF-16 or UTF-32, whichever the system's wchar_t holds. Invalid
// text is no failure: each invalid part becomes U+FFFD where a conversion meets it.
//
// All can throw std::bad_alloc.
#pragma once

#include <VelBase/ReturnString.h>
#include <VelBase/ReturnWString.h>
#include <VelBase/TextConversions.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace VelCompanion {

namespace Detail {

using Units = std::vector<unsigned short>;

// The library's strings end at the first zero. Text that goes on behind one would arrive as
// another.
template <class Character>
std::basic_string<Character> WithoutZero(std::basic_string_view<Character> text) {
    const auto place = text.find(Character(0));
    if (place == text.npos) return std::basic_string<Character>(text);
    throw std::invalid_argument("VelCompanion: the text contains a zero, after " +
                                std::to_string(place) + " characters");
}

inline std::string WithoutZero(std::string_view text) {
    return WithoutZero<char>(text);
}

inline constexpr char32_t Replacement = 0xFFFD;

constexpr bool IsHighHalf(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool IsLowHalf(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

// Takes one code point off the beginning of the text.
inline char32_t TakeCodePoint(const unsigned short*& text) noexcept {
    const char32_t first = *text++;
    if (!IsHighHalf(first) && !IsLowHalf(first)) return first;
    if (IsLowHalf(first) || !IsLowHalf(*text)) return Replacement;
    return 0x10000 + ((first - 0xD800) << 10U) + (char32_t(*text++) - 0xDC00);
}

inline void AppendCodePoint(Units& units, char32_t point) {
    if (point > 0x10FFFF || IsHighHalf(point) || IsLowHalf(point)) point = Replacement;
    if (point > 0xFFFF) units.push_back(static_cast<unsigned short>(0xD7C0 + (point >> 10U)));
    units.push_back(
        static_cast<unsigned short>(point > 0xFFFF ? 0xDC00 + (point & 0x3FFU) : point));
}

}  // namespace Detail

// Return the text in UTF-8. Null gives the empty text.
[[nodiscard]] inline std::string ToString(const VelBase::ReturnString& text) {
    return text.c_str();
}
[[nodiscard]] inline std::string ToString(const unsigned short* text) {
    return VelBase::WideCharToUTF8(text, false).c_str();
}
[[nodiscard]] inline std::string ToString(const VelBase::ReturnWString& text) {
    return ToString(text.c_str());
}

// Return the text in the system's wide characters. Null gives the empty text.
[[nodiscard]] inline std::wstring ToWString(const unsigned short* text) {
    std::wstring wide;
    while (text != nullptr && *text != 0) {
        if constexpr (sizeof(wchar_t) == sizeof *text)
            wide += static_cast<wchar_t>(*text++);
        else
            wide += static_cast<wchar_t>(Detail::TakeCodePoint(text));
    }
    return wide;
}
[[nodiscard]] inline std::wstring ToWString(const VelBase::ReturnWString& text) {
    return ToWString(text.c_str());
}
[[nodiscard]] inline std::wstring ToWString(const VelBase::ReturnString& utf8) {
    return ToWString(VelBase::UTF8ToWideChar(utf8.c_str(), false));
}

// Return the text as a string of the library.
//
// Throw: std::invalid_argument  the text contains a zero, where the library's would end
[[nodiscard]] inline VelBase::ReturnString ToReturnString(std::string_view text) {
    return {Detail::WithoutZero(text).c_str()};
}
[[nodiscard]] inline VelBase::ReturnWString ToReturnWString(std::string_view utf8) {
    return VelBase::UTF8ToWideChar(Detail::WithoutZero(utf8).c_str(), false);
}
[[nodiscard]] inline VelBase::ReturnWString ToReturnWString(std::wstring_view text) {
    Detail::Units units;
    for (const wchar_t character : Detail::WithoutZero<wchar_t>(text)) {
        if constexpr (sizeof(wchar_t) == sizeof(unsigned short))
            units.push_back(static_cast<unsigned short>(character));
        else
            Detail::AppendCodePoint(units, static_cast<char32_t>(character));
    }
    units.push_back(0);
    return {units.data()};
}

}  // namespace VelCompanion
