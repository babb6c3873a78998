#include "Printable.h"

#include "Text.h"

namespace VelSockTrace {

namespace {

unsigned int Bits(char character) noexcept {
    return static_cast<unsigned char>(character);
}

struct Sequence {
    std::size_t size;  // 0 if the text does not begin with valid UTF-8
    unsigned int point;
};

Sequence FirstSequence(std::string_view text) noexcept {
    const unsigned int lead = Bits(text[0]);
    if (lead < 0x80) return {1, lead};
    const std::size_t size = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
    if (size == 0 || text.size() < size) return {0, 0};
    unsigned int point = lead & (0x7FU >> size);
    for (std::size_t index = 1; index < size; ++index) {
        if ((Bits(text[index]) & 0xC0U) != 0x80) return {0, 0};
        point = point << 6U | (Bits(text[index]) & 0x3FU);
    }
    static constexpr unsigned int least[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isValid =
        point >= least[size] && point <= 0x10FFFF && (point < 0xD800 || point > 0xDFFF);
    return isValid ? Sequence{size, point} : Sequence{0, 0};
}

bool IsControl(unsigned int point) noexcept {
    return point < 0x20 || (point >= 0x7F && point < 0xA0);
}

bool IsSeparatorOrDirection(unsigned int point) noexcept {
    return point == 0x061C || point == 0x200E || point == 0x200F ||
           (point >= 0x2028 && point <= 0x202E) || (point >= 0x2066 && point <= 0x2069) ||
           point == 0xFEFF;
}

void AppendEscapes(std::string& line, std::string_view bytes) {
    for (const char byte : bytes)
        line.append("\\x").append(VelSockTools::HexDigits(static_cast<unsigned char>(byte)));
}

}  // namespace

std::string Printable(std::string_view text) {
    std::string line;
    while (!text.empty()) {
        const Sequence sequence = FirstSequence(text);
        const std::string_view bytes = text.substr(0, sequence.size == 0 ? 1 : sequence.size);
        if (sequence.size == 0 || IsControl(sequence.point) ||
            IsSeparatorOrDirection(sequence.point)) {
            AppendEscapes(line, bytes);
        } else {
            line.append(bytes);
        }
        text.remove_prefix(bytes.size());
    }
    return line;
}

std::string PrintableHead(std::string_view text, std::size_t most) {
    if (text.size() <= most) return Printable(text);
    // Not within a character.
    std::size_t end = most;
    while (end > 0 && (Bits(text[end]) & 0xC0U) == 0x80 && most - end < 4)
        --end;
    return Printable(text.substr(0, end)) + "...";
}

}  // namespace VelSockTrace
