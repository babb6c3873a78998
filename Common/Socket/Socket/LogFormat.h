// Message formats as the logging library takes them.
#pragma once

#include <cstddef>

namespace VelNet {

// A format, and the same in double quotes: LogMessage wants both.
struct LogFormat {
    const char* text;
    const char* quoted;
};

template <std::size_t Size>
struct LogFormatLiteral {
    char text[Size]{};
    char quoted[Size + 2]{};

    consteval LogFormatLiteral(const char (&literal)[Size]) {
        for (std::size_t index = 0; index + 1 < Size; ++index) {
            text[index] = literal[index];
            quoted[index + 1] = literal[index];
        }
        quoted[0] = '"';
        quoted[Size] = '"';
    }
};

template <LogFormatLiteral Literal>
consteval LogFormat operator""_format() noexcept {
    return {Literal.text, Literal.quoted};
}

}  // namespace VelNet
