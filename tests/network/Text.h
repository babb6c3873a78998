// The library's wide texts as the scripts compare them.
#pragma once

#include <string>

namespace Network {

// Printable ASCII stays; every other unit is shown as its number, "<10061>".
std::string Narrow(const unsigned short* text);

}  // namespace Network
