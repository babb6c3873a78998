// A record's text as the formats need it.
#pragma once

#include <string>
#include <string_view>

namespace VelLogging {

// Returns the UTF-16 text as UTF-8; what is broken becomes U+FFFD.
std::string Utf8Of(const unsigned short* text);

// Appends the text with its controls written as \u and four upper-case digits, as the library makes
// them visible.
void AppendVisible(std::string& line, std::string_view text);

// Appends the text for between the quotes of JSON and logfmt: quotes, backslashes and controls are
// escaped.
void AppendEscaped(std::string& line, std::string_view text);

// How many bytes of the text remain if it is cut before this many, between two characters.
std::size_t LengthUpTo(std::string_view text, std::size_t most) noexcept;

}  // namespace VelLogging
