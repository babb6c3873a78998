// The parts of a configuration's text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace VelLogging {

struct Part {
    std::string text;
    std::size_t position;  // of its first character in the whole text, from 1
};

// The parts between separators, without the blanks around them. A separator that is written twice
// is a character of its part, and stays doubled, so that each character keeps its position.
std::vector<Part> SplitAt(char separator, const Part& whole);

// The text of a target or value: without the second one of each two commas or semicolons.
std::string Meant(std::string_view text);

// The part before the first separator, and what is behind it, without blanks; the second is empty,
// and `isFound` false, if there is none.
struct Halves {
    Part first;
    Part second;
    bool isFound;
};
Halves HalvesAt(char separator, const Part& whole);

// Whether the text is like the pattern, in which "*" stands for any characters and "?" for one.
bool IsLike(std::string_view text, std::string_view pattern) noexcept;

// Returns whether the text is a number from 1, with K, M or G behind it for that many times 1024,
// and stores it.
bool ReadNumber(std::string_view text, unsigned long long& number) noexcept;

}  // namespace VelLogging
