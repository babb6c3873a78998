#include "Text.h"

namespace Network {

namespace {

void Append(std::string& narrow, unsigned short unit) {
    if (unit >= ' ' && unit <= '~') {
        narrow += static_cast<char>(unit);
    } else {
        narrow.append("<").append(std::to_string(unit)).append(">");
    }
}

}  // namespace

std::string Narrow(const unsigned short* text) {
    std::string narrow;
    for (; *text != 0; ++text) {
        Append(narrow, *text);
    }
    return narrow;
}

}  // namespace Network
