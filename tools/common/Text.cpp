#include "Text.h"

#include <VelBase/TextConversions.h>

namespace VelSockTools {

namespace {

bool IsControl(char character) {
    const auto value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7F;
}

std::string HexEscape(char character) {
    return "\\x" + HexDigits(static_cast<unsigned char>(character));
}

}  // namespace

std::string ValidUtf8(const std::string& text) {
    const VelBase::ReturnWString wide = VelBase::UTF8ToWideChar(text.c_str(), false);
    return VelBase::WideCharToUTF8(wide.c_str(), false).c_str();
}

std::string OneLine(std::string_view text) {
    std::string line;
    for (const char character : text) {
        line += IsControl(character) ? HexEscape(character) : std::string(1, character);
    }
    return line;
}

std::string HexDigits(unsigned char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    return {digits[byte / 16], digits[byte % 16]};
}

}  // namespace VelSockTools
