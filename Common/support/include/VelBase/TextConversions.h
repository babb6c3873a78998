// Conversions between narrow and wide strings.
#pragma once

#include "VelBase/Export.h"
#include "VelBase/ReturnString.h"
#include "VelBase/ReturnWString.h"

namespace VelBase {

// Convert between UTF-8 and UTF-16. Null counts as the empty string. Invalid text is no failure:
// each maximal invalid part (a broken sequence, half a surrogate pair) becomes one U+FFFD, and what
// follows it is kept.
//
// The flag has no effect; pass false.
//
// Throw: std::bad_alloc
VELSOCK_EXPORT ReturnWString UTF8ToWideChar(const char* text, bool flag);
VELSOCK_EXPORT ReturnString WideCharToUTF8(const unsigned short* text, bool flag);

}  // namespace VelBase
