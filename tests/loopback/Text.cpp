#include <loopback/Text.h>

namespace Loopback {

std::u16string Text(const unsigned short* text) {
    if (text == nullptr) return u"(null)";
    std::u16string units;
    for (; *text != 0; ++text) {
        units += static_cast<char16_t>(*text);
    }
    return units;
}

std::u16string Widen(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

std::u16string ErrorTail(int number, std::u16string_view description) {
    std::u16string tail = u", errno = ";
    tail += static_cast<char16_t>(number);
    return tail.append(u" ").append(description);
}

}  // namespace Loopback
