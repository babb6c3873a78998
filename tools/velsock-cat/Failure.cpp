#include "Failure.h"

#include <VelBase/TextConversions.h>

#include <cstdio>
#include <string_view>

namespace VelSockCat {

namespace {

std::string Describe(const VelNet::Exception& exception) {
    const VelBase::ReturnString text = VelBase::WideCharToUTF8(exception.GetMessage(), false);
    return text.c_str() + (" (code " + std::to_string(exception.GetErrorCode()) + ")");
}

bool IsControl(char character) {
    const auto value = static_cast<unsigned char>(character);
    return value < 0x20 || value == 0x7F;
}

std::string Hexadecimal(char character) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(character);
    return {'\\', 'x', digits[value / 16], digits[value % 16]};
}

// A host name may hold anything. Made visible, its control characters can neither start a second
// line nor drive the terminal.
std::string OneLine(std::string_view text) {
    std::string line;
    for (const char character : text) {
        line += IsControl(character) ? Hexadecimal(character) : std::string(1, character);
    }
    return line;
}

}  // namespace

Failure::Failure(ExitCode code, const VelNet::Exception& cause) : Failure(code, Describe(cause)) {}

ExitCode Report(const Failure& failure) {
    const std::string line = "velsock-cat: " + OneLine(failure.what()) + "\n";
    std::fputs(line.c_str(), stderr);
    return failure.Code();
}

}  // namespace VelSockCat
