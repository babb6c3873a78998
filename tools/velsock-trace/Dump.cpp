#include "Dump.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>

#include "Printable.h"
#include "Text.h"

namespace VelSockTrace {

namespace {

constexpr const char* Margin = "    ";
constexpr std::size_t BytesOfLine = 16;

char Shown(char byte) noexcept {
    return byte >= 0x20 && byte < 0x7F ? byte : '.';
}

std::string HexLine(std::string_view bytes, std::uint64_t offset) {
    char head[24];
    std::snprintf(head, sizeof head, "%08" PRIX64 "  ", offset);
    std::string line = std::string(Margin) + head;
    for (std::size_t index = 0; index < BytesOfLine; ++index) {
        line += index < bytes.size()
                    ? VelSockTools::HexDigits(static_cast<unsigned char>(bytes[index])) + " "
                    : "   ";
        if (index == BytesOfLine / 2 - 1) line += ' ';
    }
    line += ' ';
    std::transform(bytes.begin(), bytes.end(), std::back_inserter(line), Shown);
    return line + "\n";
}

}  // namespace

std::string TextDump(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
        const std::size_t end = std::min(bytes.find('\n'), bytes.size());
        const bool isWhole = end < bytes.size();
        std::string_view line = bytes.substr(0, end);
        const bool hasReturn = isWhole && line.ends_with('\r');
        if (hasReturn) line.remove_suffix(1);
        text += Margin + Printable(line);
        text += hasReturn ? "\\r\\n\n" : isWhole ? "\\n\n" : "\n";
        bytes.remove_prefix(isWhole ? end + 1 : end);
    }
    return text;
}

std::string HexDump(std::string_view bytes, std::uint64_t offset) {
    std::string text;
    for (std::size_t begin = 0; begin < bytes.size(); begin += BytesOfLine)
        text += HexLine(bytes.substr(begin, BytesOfLine), offset + begin);
    return text;
}

}  // namespace VelSockTrace
