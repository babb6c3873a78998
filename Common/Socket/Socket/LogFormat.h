// The message formats that the logging library takes, and the one function that writes a record.
#pragma once

#include "VelLog/Router.h"
#include "VelResource/MessageFormatter.h"

#include <cstddef>

namespace VelNet {

// A format, and the same in double quotes: LogMessage takes both.
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

// Writes a record with the arguments that the formatter holds. The caller has checked that the
// router is on.
void WriteRecord(VelLog::Router& router, LogFormat format,
                 VelResource::MessageFormatter& formatter);

}  // namespace VelNet
