// What the fuzz targets share: taking values off an input, and stopping at an answer that is not
// the model's.
#pragma once

#include <gtest/gtest-printers.h>

#include <cstddef>
#include <string>
#include <string_view>

// The fuzzer, or the replay of files, calls it with each input. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

namespace Fuzz {

// An input, read from its beginning. Whatever is asked for behind its end is zero or empty, so that
// every input means something.
class Input {
public:
    Input(const unsigned char* data, std::size_t size);

    bool IsEmpty() const { return rest_.empty(); }
    unsigned int Byte();
    // A number below the limit, from one byte.
    unsigned int Below(unsigned int limit) { return Byte() % limit; }
    bool Flag() { return Below(2) == 1; }
    // A number of four bytes.
    int Number();
    // Up to the next line feed, which belongs to no line.
    std::string_view Line();
    std::string_view Rest();

private:
    std::string_view rest_;
};

// Up to the first zero, as a reader of the C string sees it.
std::string CText(std::string_view bytes);

// Bytes as verbose records have them: as the C library formats signed ones.
std::string Hexadecimal(std::string_view bytes);

// Ends the process; the fuzzer keeps the input then.
[[noreturn]] void Fail(std::string_view what, const std::string& expected,
                       const std::string& actual);

template <class Value>
void Expect(std::string_view what, const Value& expected, const Value& actual) {
    if (actual == expected) return;
    Fail(what, testing::PrintToString(expected), testing::PrintToString(actual));
}

}  // namespace Fuzz
