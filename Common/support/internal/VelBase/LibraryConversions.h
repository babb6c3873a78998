// Conversions between narrow and wide strings that only the library itself needs.
#pragma once

#include "VelBase/ReturnString.h"
#include "VelBase/ReturnWString.h"

namespace VelBase {

// Null counts as the empty string; the flags have no effect. All throw std::bad_alloc.

// Converts exactly length units, zeros included; as a string, the result ends at the first zero.
ReturnString WideCharToUTF8UsingLength(const unsigned short* units, unsigned int length, bool flag);

// Convert between the system's code page and UTF-16.
ReturnWString MultiByteToWideChar(const char* text, bool flag);
ReturnString WideCharToMultiByte(const unsigned short* text, bool flag);

// Returns the number in decimal digits, with a minus sign if it is negative.
ReturnWString ToDecimalWString(int number);

}  // namespace VelBase
