#include "Escapes.h"

#include <charconv>

namespace VelSockTrace {

namespace {

// Whether the quotation mark at the position ends the string: an even number of backslashes
// precedes it.
bool IsEnd(std::string_view text, std::size_t mark) noexcept {
    std::size_t first = mark;
    while (first > 0 && text[first - 1] == '\\')
        --first;
    return (mark - first) % 2 == 0;
}

std::size_t EndOfString(std::string_view text) noexcept {
    std::size_t mark = text.find('"');
    while (mark != std::string_view::npos && !IsEnd(text, mark))
        mark = text.find('"', mark + 1);
    return mark;
}

// Returns the UTF-16 unit of four digits and removes them, or returns U+FFFD.
unsigned int TakeUnit(std::string_view& text) noexcept {
    unsigned int unit = 0;
    const char* const first = text.data();
    if (text.size() < 4 || std::from_chars(first, first + 4, unit, 16).ptr != first + 4)
        return 0xFFFD;
    text.remove_prefix(4);
    return unit;
}

unsigned int TakeCodePoint(std::string_view& text) noexcept {
    const unsigned int unit = TakeUnit(text);
    if (unit < 0xD800 || unit > 0xDFFF) return unit;
    if (unit > 0xDBFF || !text.starts_with("\\u")) return 0xFFFD;
    text.remove_prefix(2);
    const unsigned int low = TakeUnit(text);
    if (low < 0xDC00 || low > 0xDFFF) return 0xFFFD;
    return 0x10000 + ((unit - 0xD800) << 10U) + (low - 0xDC00);
}

void AppendUtf8(std::string& text, unsigned int point) {
    const auto tail = [&](unsigned int shift) {
        text += static_cast<char>(0x80 | (point >> shift & 0x3F));
    };
    if (point < 0x80) {
        text += static_cast<char>(point);
    } else if (point < 0x800) {
        text += static_cast<char>(0xC0 | point >> 6U);
        tail(0);
    } else if (point < 0x10000) {
        text += static_cast<char>(0xE0 | point >> 12U);
        tail(6), tail(0);
    } else {
        text += static_cast<char>(0xF0 | point >> 18U);
        tail(12), tail(6), tail(0);
    }
}

char PlainEscape(char letter) noexcept {
    switch (letter) {
        case 'n':
            return '\n';
        case 't':
            return '\t';
        case 'r':
            return '\r';
        case 'b':
            return '\b';
        case 'f':
            return '\f';
        default:
            return letter;
    }
}

void AppendResolved(std::string& resolved, std::string_view text) {
    for (;;) {
        const std::size_t backslash = text.find('\\');
        resolved.append(text.substr(0, backslash));
        if (backslash == std::string_view::npos || backslash + 1 == text.size()) return;
        const char letter = text[backslash + 1];
        text.remove_prefix(backslash + 2);
        if (letter == 'u') {
            AppendUtf8(resolved, TakeCodePoint(text));
        } else {
            resolved += PlainEscape(letter);
        }
    }
}

}  // namespace

std::string_view TakeQuoted(std::string_view& text, std::string& scratch) {
    text.remove_prefix(1);
    const std::size_t end = EndOfString(text);
    const std::string_view raw = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (raw.find('\\') == std::string_view::npos) return raw;
    // The room is there already: earlier values stay where they are.
    const std::size_t begin = scratch.size();
    AppendResolved(scratch, raw);
    return std::string_view(scratch).substr(begin);
}

}  // namespace VelSockTrace
