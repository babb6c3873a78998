// Between the library's wide texts and the system's, which are of a type of their own and just as
// wide.
#pragma once

#include "Platform/System.h"

#include <cstddef>
#include <string>

namespace Windows {

std::wstring SystemText(const unsigned short* text);
std::wstring SystemText(const unsigned short* units, std::size_t count);
System::WideUnits OwnText(const wchar_t* units, std::size_t count);

}  // namespace Windows
