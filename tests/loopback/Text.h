// Wide texts as the tests compare and print them.
#pragma once

#include <string>
#include <string_view>

namespace Loopback {

// A null text gives u"(null)".
std::u16string Text(const unsigned short* text);

// ASCII only.
std::u16string Widen(std::string_view ascii);

// How every failure text with a system error ends: the number as one unit, then its description.
std::u16string ErrorTail(int number, std::u16string_view description);

}  // namespace Loopback
