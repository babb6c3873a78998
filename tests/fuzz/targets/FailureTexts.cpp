// The texts and codes of failures, against the table of errors that the unit tests have written out
// a second time. The input is a number and two lines: label and description.
#include <Socket/FailureText.h>

#include <algorithm>
#include <array>

#include "fuzz/Fuzzing.h"
#include "support/Text.h"
#include "unit/socket/ErrorTableExpectations.h"

namespace {

using FoundationTests::ExpectedRow;

// A number from the table, one beside it, or any.
int TakeErrorNumber(Fuzz::Input& input) {
    const unsigned int row = input.Byte();
    if (row >= FoundationTests::ErrorRowCount) return input.Number();
    const int offset = std::array{0, 1, -1, 10000, -10000, 65536, -65536}[input.Below(7)];
    return FoundationTests::ExpectedErrorTable[row].key + offset;
}

std::string Ascii(std::string_view line) {
    std::string text = Fuzz::CText(line);
    for (char& character : text)
        character = static_cast<char>(character & 0x7F);
    return Fuzz::CText(text);
}

void CompareException(const std::u16string& text, int error) {
    const VelNet::SOCKET_ERR code = VelNet::Exception::GetSocketError(error);
    Fuzz::Expect("the code", ExpectedRow(error).code, static_cast<int>(code));
    const VelNet::Exception made(Support::Wide(text).data(), code);
    const VelNet::Exception copied = made;
    Fuzz::Expect("the exception's text", text, Support::Text(copied.GetMessage()));
    Fuzz::Expect("the exception's code", ExpectedRow(error).code,
                 static_cast<int>(copied.GetErrorCode()));
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::Input input(data, size);
    const int error = TakeErrorNumber(input);
    const std::string label = Ascii(input.Line());
    const std::string description = Ascii(input.Rest());

    const std::u16string expected =
        FoundationTests::ExpectedFailureText(label + ' ' + description, error);
    const auto text = VelNet::ComposeFailureText(Support::Wide(label.c_str()).data(),
                                                 Support::Wide(description.c_str()).data(),
                                                 static_cast<unsigned int>(error));
    Fuzz::Expect("the text", expected, Support::Text(text.c_str()));
    CompareException(expected, error);
    return 0;
}
