// Conversions between narrow and wide strings.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"
#include "VelBase/ReturnWString.h"

namespace VelBase {

// Convert between UTF-8 and UTF-16. Null counts as the empty string. A conversion does not fail:
// each maximal invalid part (a broken sequence, half a surrogate pair) becomes one U+FFFD, and what
// follows it is kept.
//
// The flag has no effect; pass false.
//
// Throw: std::bad_alloc
//
// The module exports these two only; what follows is for the library itself.
VELSOCK_EXPORT ReturnWString UTF8ToWideChar(const char* text, bool flag);
VELSOCK_EXPORT ReturnString WideCharToUTF8(const unsigned short* text, bool flag);

// Converts exactly length units, zeros included; as a string, the result ends at the first zero.
ReturnString WideCharToUTF8UsingLength(const unsigned short* units, unsigned int length, bool flag);

// Convert between the system's code page and UTF-16.
ReturnWString MultiByteToWideChar(const char* text, bool flag);
ReturnString WideCharToMultiByte(const unsigned short* text, bool flag);

// Returns the number in decimal digits, with a minus sign if it is negative.
ReturnWString ToDecimalWString(int number);

}  // namespace VelBase
