#include "VelBase/LibraryConversions.h"

#include "Platform/System.h"
#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/WideText.h"

namespace VelBase {

ReturnString WideCharToUTF8UsingLength(const unsigned short* units, unsigned int length, bool) {
    return Text::Utf8FromUtf16({units, length}).c_str();
}

ReturnWString MultiByteToWideChar(const char* text, bool) {
    return WideText().AppendMultiByte(text != nullptr ? text : "").ToReturnWString();
}

ReturnString WideCharToMultiByte(const unsigned short* text, bool) {
    return System::CodePageFromWide(text, Text::WideLength(text)).c_str();
}

ReturnWString ToDecimalWString(int number) {
    return WideText().AppendDecimal(number).ToReturnWString();
}

}  // namespace VelBase
