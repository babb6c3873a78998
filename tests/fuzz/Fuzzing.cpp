#include "Fuzzing.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace Fuzz {

Input::Input(const unsigned char* data, std::size_t size)
    : rest_(reinterpret_cast<const char*>(data), size) {}

unsigned int Input::Byte() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
}

int Input::Number() {
    unsigned int number = 0;
    for (int byte = 0; byte < 4; ++byte)
        number = number << 8 | Byte();
    return static_cast<int>(number);
}

std::string_view Input::Line() {
    const std::size_t end = rest_.find('\n');
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end == std::string_view::npos ? rest_.size() : end + 1);
    return line;
}

std::string_view Input::Rest() {
    const std::string_view rest = rest_;
    rest_ = {};
    return rest;
}

std::string CText(std::string_view bytes) {
    return std::string(bytes.substr(0, bytes.find('\0')));
}

std::string Hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[9];
        std::snprintf(digits, sizeof digits, "%02X",
                      static_cast<unsigned int>(static_cast<signed char>(byte)));
        text += digits;
    }
    return text;
}

void Fail(std::string_view what, const std::string& expected, const std::string& actual) {
    std::fprintf(stderr, "%.*s\n  expected: %s\n  actual:   %s\n", static_cast<int>(what.size()),
                 what.data(), expected.c_str(), actual.c_str());
    std::abort();
}

}  // namespace Fuzz
