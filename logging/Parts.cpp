#include "Parts.h"

#include <limits>

namespace VelLogging {

namespace {

constexpr char Blanks[] = " \t\r\n";

Part Trimmed(std::string_view text, std::size_t position) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) return {"", position};
    const std::size_t last = text.find_last_not_of(Blanks);
    return {std::string(text.substr(first, last - first + 1)), position + first};
}

// Whether the same character follows.
bool IsDoubled(std::string_view text, std::size_t index) noexcept {
    return index + 1 < text.size() && text[index + 1] == text[index];
}

int ShiftOf(char unit) noexcept {
    switch (unit) {
        case 'K':
        case 'k':
            return 10;
        case 'M':
        case 'm':
            return 20;
        case 'G':
        case 'g':
            return 30;
        default:
            return 0;
    }
}

}  // namespace

std::vector<Part> SplitAt(char separator, const Part& whole) {
    const std::string_view text = whole.text;
    std::vector<Part> parts;
    std::size_t begin = 0;
    for (std::size_t index = 0; index < text.size(); ++index) {
        if (text[index] != separator) continue;
        if (IsDoubled(text, index)) {
            ++index;
            continue;
        }
        parts.push_back(Trimmed(text.substr(begin, index - begin), whole.position + begin));
        begin = index + 1;
    }
    parts.push_back(Trimmed(text.substr(begin), whole.position + begin));
    return parts;
}

std::string Meant(std::string_view text) {
    std::string meant;
    for (std::size_t index = 0; index < text.size(); ++index) {
        meant += text[index];
        const bool separates = text[index] == ',' || text[index] == ';';
        if (separates && IsDoubled(text, index)) ++index;
    }
    return meant;
}

Halves HalvesAt(char separator, const Part& whole) {
    const std::string_view text = whole.text;
    const std::size_t place = text.find(separator);
    if (place == std::string_view::npos) return {whole, {"", whole.position}, false};
    return {Trimmed(text.substr(0, place), whole.position),
            Trimmed(text.substr(place + 1), whole.position + place + 1), true};
}

// Goes back to the last "*" and lets it stand for one character more, as often as need be.
bool IsLike(std::string_view text, std::string_view pattern) noexcept {
    std::size_t inText = 0;
    std::size_t inPattern = 0;
    std::size_t star = std::string_view::npos;
    std::size_t underStar = 0;
    while (inText < text.size()) {
        if (inPattern < pattern.size() && pattern[inPattern] == '*') {
            star = inPattern++;
            underStar = inText;
        } else if (inPattern < pattern.size() &&
                   (pattern[inPattern] == '?' || pattern[inPattern] == text[inText])) {
            ++inPattern;
            ++inText;
        } else if (star != std::string_view::npos) {
            inPattern = star + 1;
            inText = ++underStar;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', inPattern) == std::string_view::npos;
}

bool ReadNumber(std::string_view text, unsigned long long& number) noexcept {
    const int shift = text.empty() ? 0 : ShiftOf(text.back());
    if (shift != 0) text.remove_suffix(1);
    const unsigned long long most = std::numeric_limits<unsigned long long>::max() >> shift;
    unsigned long long read = 0;
    for (const char character : text) {
        if (character < '0' || character > '9') return false;
        const auto digit = static_cast<unsigned long long>(character - '0');
        if (read > (most - digit) / 10) return false;
        read = read * 10 + digit;
    }
    number = read << shift;
    return number != 0;
}

}  // namespace VelLogging
