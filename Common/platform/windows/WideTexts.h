// Converts between the library's wide strings and the system's, which have another type of the same
// width.
#pragma once

#include "Platform/System.h"

#include <cstddef>
#include <string>

namespace Windows {

std::wstring SystemText(const unsigned short* text);
std::wstring SystemText(const unsigned short* units, std::size_t count);
System::WideUnits OwnText(const wchar_t* units, std::size_t count);

}  // namespace Windows
