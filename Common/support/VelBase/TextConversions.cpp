#include "VelBase/TextConversions.h"

#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/WideText.h"

namespace VelBase {

ReturnWString UTF8ToWideChar(const char* text, bool) {
    return WideText().AppendUtf8(text != nullptr ? text : "").ToReturnWString();
}

ReturnString WideCharToUTF8(const unsigned short* text, bool) {
    return Text::Utf8FromUtf16({text, Text::WideLength(text)}).c_str();
}

}  // namespace VelBase
