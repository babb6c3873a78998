#include <Text/HexDigit.h>

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(HexDigit, IsThatOfTheLowestFourBits) {
    std::string digits;
    for (unsigned int number = 0; number < 16; ++number)
        digits += Text::HexDigit(0xABCDEF0U | number);
    EXPECT_EQ(digits, "0123456789ABCDEF");
}

}  // namespace
