#include "VelBase/LibraryConversions.h"

#include "Platform/System.h"
#include "Text/Utf8.h"
#include "Text/WideLength.h"
#include "VelBase/WideText.h"

#include <charconv>
#include <limits>

namespace VelBase {

ReturnString WideCharToUTF8UsingLength(const unsigned short* units, unsigned int length, bool) {
    return Text::Utf8FromUtf16({units, length}).c_str();
}

ReturnWString MultiByteToWideChar(const char* text, bool) {
    const std::string_view view = text != nullptr ? text : "";
    return WideText().Append(System::WideFromCodePage(view.data(), view.size())).ToReturnWString();
}

ReturnString WideCharToMultiByte(const unsigned short* text, bool) {
    return System::CodePageFromWide(text, Text::WideLength(text)).c_str();
}

ReturnWString ToDecimalWString(int number) {
    char digits[std::numeric_limits<int>::digits10 + 2];  // with the sign
    const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    return WideText().AppendUtf8({digits, end}).ToReturnWString();
}

}  // namespace VelBase
