// The bytes in verbose records, against the C library's formatting.
#include <Socket/TraceRecords.h>

#include <cstdio>

#include "fuzz/Fuzzing.h"

namespace {

std::string AsPrinted(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[9];
        std::snprintf(digits, sizeof digits, "%02X",
                      static_cast<unsigned int>(static_cast<signed char>(byte)));
        text += digits;
    }
    return text;
}

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(Fuzz::Input(data, size).Rest());
    const auto text =
        VelNet::FormatTraceBytes(bytes.data(), static_cast<unsigned int>(bytes.size()));
    Fuzz::Expect<std::string>("FormatTraceBytes", AsPrinted(bytes), text.c_str());
    return 0;
}
