#include <Text/Decimal.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace {

std::string Decimal(unsigned char number) {
    char text[] = "####";
    const char* const end = Text::PutDecimal(text, number);
    return {static_cast<const char*>(text), end};
}

TEST(Decimal, NumbersHaveNoZerosBeforeThem) {
    for (int number = 0; number < 256; ++number)
        EXPECT_EQ(Decimal(static_cast<unsigned char>(number)), std::to_string(number));
}

struct Dotted {
    unsigned char octets[4];
    std::string_view text;
};

TEST(Decimal, OctetsAreDividedByPointsAndEnded) {
    for (const auto& [octets, text] :
         {Dotted{{0, 0, 0, 0}, "0.0.0.0"}, Dotted{{1, 20, 3, 255}, "1.20.3.255"},
          Dotted{{127, 0, 0, 1}, "127.0.0.1"}, Dotted{{10, 9, 100, 99}, "10.9.100.99"},
          Dotted{{255, 255, 255, 255}, "255.255.255.255"}}) {
        std::string room(Text::DottedSize + 1, '#');
        Text::PutDotted(room.data(), octets);
        EXPECT_EQ(room.substr(0, text.size() + 1), std::string(text) + '\0');
        EXPECT_EQ(room.substr(text.size() + 1), std::string(Text::DottedSize - text.size(), '#'));
    }
}

TEST(Decimal, LongestDottedFormFillsItsRoom) {
    EXPECT_EQ(Text::DottedSize, std::string_view("255.255.255.255").size() + 1);
}

}  // namespace
