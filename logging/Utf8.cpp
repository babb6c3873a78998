#include "Utf8.h"

#include <VelBase/TextConversions.h>

#include <cstddef>

namespace VelLogging {

namespace {

// The second byte of the controls from U+0080 to U+009F, behind this one.
constexpr unsigned char LatinLead = 0xC2;

// The control that begins the text, or -1 if another character does.
int ControlAt(std::string_view text) noexcept {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x20 || first == 0x7F) return first;
    if (first != LatinLead || text.size() < 2) return -1;
    const auto second = static_cast<unsigned char>(text[1]);
    return second < 0xA0 ? second : -1;
}

std::size_t BytesOf(int control) noexcept {
    return control < 0x80 ? 1 : 2;
}

void AppendNumbered(std::string& line, int control, const char* digits) {
    line += "\\u00";
    line += digits[control >> 4];
    line += digits[control & 0xF];
}

// The letter of the short escape, or 0 if there is none.
char ShortEscape(char character) noexcept {
    switch (character) {
        case '"':
        case '\\':
            return character;
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        default:
            return 0;
    }
}

}  // namespace

std::string Utf8Of(const unsigned short* text) {
    return VelBase::WideCharToUTF8(text, false).c_str();
}

void AppendVisible(std::string& line, std::string_view text) {
    while (!text.empty()) {
        const int control = ControlAt(text);
        if (control >= 0) {
            AppendNumbered(line, control, "0123456789ABCDEF");
        } else {
            line += text[0];
        }
        text.remove_prefix(control >= 0 ? BytesOf(control) : 1);
    }
}

void AppendEscaped(std::string& line, std::string_view text) {
    while (!text.empty()) {
        const char escape = ShortEscape(text[0]);
        const int control = escape == 0 ? ControlAt(text) : -1;
        if (escape != 0) {
            line += '\\';
            line += escape;
        } else if (control >= 0) {
            AppendNumbered(line, control, "0123456789abcdef");
        } else {
            line += text[0];
        }
        text.remove_prefix(control >= 0 ? BytesOf(control) : 1);
    }
}

std::size_t LengthUpTo(std::string_view text, std::size_t most) noexcept {
    if (text.size() <= most) return text.size();
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0) == 0x80)
        --most;
    return most;
}

}  // namespace VelLogging
