// The records' hexadecimal form.
#include "velsock-trace/HexBytes.h"

#include <gtest/gtest.h>

namespace {

using VelSockTrace::DecodeBytes;

constexpr std::uint64_t All = 1000;

TEST(HexBytesDecoding, AByteHasTwoOrEightDigits) {
    EXPECT_EQ(DecodeBytes("68FFFFFF80FFFFFFFF0a7F", 0, All), "h\x80\xFF\n\x7F");
    EXPECT_EQ(DecodeBytes("", 0, All), "");
}

TEST(HexBytesDecoding, EndsWhereSomethingElseFollows) {
    for (const char* const rest :
         {"x", "4", "80", "FF", "FFFFFF7F", "FFFFFF8", "FFFFF80", "FFFFFG80"})
        EXPECT_EQ(DecodeBytes(std::string("41") + rest, 0, All), "A") << rest;
}

TEST(HexBytesDecoding, LeavesOutTheFirstAndThoseBeyondTheLimit) {
    EXPECT_EQ(DecodeBytes("4142FFFFFF804344", 2, 2),
              "\x80"
              "C");
    EXPECT_EQ(DecodeBytes("4142", 3, All), "");
}

}  // namespace
