#include <Text/WideLength.h>

#include <gtest/gtest.h>

namespace {

using Text::WideLength;

TEST(WideLength, IsCountedUpToTheTerminator) {
    const unsigned short text[] = {'a', 0xFFFF, 'c', 0, 'd', 0};
    EXPECT_EQ(WideLength(text), 3U);
    EXPECT_EQ(WideLength(text + 3), 0U);
}

TEST(WideLength, IsZeroForNull) {
    EXPECT_EQ(WideLength(nullptr), 0U);
}

}  // namespace
