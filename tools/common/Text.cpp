#include "Text.h"

namespace VelSockTools {

namespace {

bool IsControl(char character) {
    const auto value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7F;
}

std::string Hexadecimal(char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(character);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

}  // namespace

std::string OneLine(std::string_view text) {
    std::string line;
    for (const char character : text) {
        line += IsControl(character) ? Hexadecimal(character) : std::string(1, character);
    }
    return line;
}

}  // namespace VelSockTools
