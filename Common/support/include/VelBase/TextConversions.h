// Conversions between narrow and wide texts.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"
#include "VelBase/ReturnWString.h"

namespace VelBase {

// Between UTF-8 and UTF-16. What is no valid text (a broken sequence, half a surrogate pair)
// becomes U+FFFD, one for each maximal part that is broken: a conversion never fails and never
// loses what stands behind. Null counts as the empty text. All throw std::bad_alloc.
//
// The flag has no effect; pass false. The module exports these two; what follows is for the library
// itself.
VELSOCK_EXPORT ReturnWString UTF8ToWideChar(const char* text, bool flag);
VELSOCK_EXPORT ReturnString WideCharToUTF8(const unsigned short* text, bool flag);

// Converts so many units, wherever a zero stands; the result's text ends at the first zero, if one
// is among them.
ReturnString WideCharToUTF8UsingLength(const unsigned short* units, unsigned int length, bool flag);

// Between the system's code page and UTF-16.
ReturnWString MultiByteToWideChar(const char* text, bool flag);
ReturnString WideCharToMultiByte(const unsigned short* text, bool flag);

// The number in decimal digits, with a minus sign when negative.
ReturnWString ToDecimalWString(int number);

}  // namespace VelBase
