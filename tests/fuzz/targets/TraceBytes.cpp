// The bytes in verbose records, against the C library's formatting.
#include <Socket/TraceRecords.h>

#include "fuzz/Fuzzing.h"

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const std::string bytes(Fuzz::Input(data, size).Rest());
    const auto text =
        VelNet::FormatTraceBytes(bytes.data(), static_cast<unsigned int>(bytes.size()));
    Fuzz::Expect<std::string>("FormatTraceBytes", Fuzz::Hexadecimal(bytes), text.c_str());
    return 0;
}
