#include <cstring>

#include "Scene.h"

namespace Conformance {
namespace {

struct DottedRow {
    const char* text;
    unsigned int address;

    friend void PrintTo(const DottedRow& row, std::ostream* stream) { *stream << row.text; }
};

class NameDottedText : public testing::TestWithParam<DottedRow> {};

TEST_P(NameDottedText, IsReadAsTheSystemReadsIt) {
    EXPECT_TRUE(Answers(GetParam().address, Winsock::inet_addr(GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, NameDottedText,
    testing::Values(DottedRow{"127.0.0.1", 0x0100007F}, DottedRow{"1.2.3.4", 0x04030201},
                    DottedRow{"0.0.0.0", 0}, DottedRow{"255.255.255.255", 0xFFFFFFFF},
                    DottedRow{"1", 0x01000000}, DottedRow{"1.2", 0x02000001},
                    DottedRow{"1.2.3", 0x03000201}, DottedRow{"1.65535", 0xFFFF0001},
                    DottedRow{"0x7f.0.0.1", 0x0100007F}, DottedRow{"0177.0.0.1", 0x0100007F},
                    DottedRow{"4294967295", 0xFFFFFFFF}, DottedRow{"1.2.3.4 ", 0x04030201},
                    DottedRow{"1.2.3.4 and more", 0x04030201}, DottedRow{" ", 0},
                    DottedRow{"", 0xFFFFFFFF}, DottedRow{" 1.2.3.4", 0xFFFFFFFF},
                    DottedRow{"1.2.3.", 0xFFFFFFFF}, DottedRow{"1.2.3.4.5", 0xFFFFFFFF},
                    DottedRow{"256.0.0.1", 0xFFFFFFFF}, DottedRow{"1.2.3.256", 0xFFFFFFFF},
                    DottedRow{"08.0.0.1", 0xFFFFFFFF}, DottedRow{"name", 0xFFFFFFFF},
                    DottedRow{"1.2.3.4x", 0xFFFFFFFF}, DottedRow{"::1", 0xFFFFFFFF}));

TEST(NameDottedTexts, LeaveTheLastErrorAloneExceptNull) {
    EXPECT_EQ(Winsock::inet_addr(nullptr), 0xFFFFFFFF);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10014);
    EXPECT_EQ(Winsock::inet_addr("no address"), 0xFFFFFFFF);
    EXPECT_EQ(Winsock::inet_addr("1.2.3.4"), 0x04030201U);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10014);
}

using NameOfTheComputer = Started;

TEST_F(NameOfTheComputer, IsTerminatedAndFitsExactly) {
    char name[300];
    std::memset(name, '#', sizeof name);
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    const int length = static_cast<int>(std::strlen(name));
    EXPECT_GT(length, 0);
    std::memset(name, '#', sizeof name);
    EXPECT_TRUE(Succeeds(Winsock::gethostname(name, length + 1)));
    EXPECT_EQ(name[length], '\0');
    EXPECT_EQ(name[length + 1], '#');
}

TEST_F(NameOfTheComputer, WithoutRoomIsNotWrittenAtAll) {
    char name[300] = {};
    ASSERT_TRUE(Succeeds(Winsock::gethostname(name, sizeof name)));
    const int length = static_cast<int>(std::strlen(name));
    for (const int room : {length, 1, 0, -1}) {
        std::memset(name, '#', sizeof name);
        EXPECT_TRUE(FailsWith(10014, Winsock::gethostname(name, room))) << room;
        EXPECT_EQ(std::string(name, sizeof name), std::string(sizeof name, '#'));
    }
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostname(nullptr, 100)));
}

using NameQueryByAddress = Started;

TEST_F(NameQueryByAddress, RefusesWrongArguments) {
    const char address[16] = {127, 0, 0, 1};
    EXPECT_TRUE(FailsWith(10047, Winsock::gethostbyaddr(address, 4, 10)));
    EXPECT_TRUE(FailsWith(10047, Winsock::gethostbyaddr(address, 4, 0),
                          "a host by an address without family"));
    EXPECT_TRUE(
        FailsWith(10014, Winsock::gethostbyaddr(address, 3, 2), "a host by too short an address"));
    EXPECT_TRUE(
        FailsWith(10014, Winsock::gethostbyaddr(address, -1, 2), "a host by too short an address"));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(address, 15, 23),
                          "a host by too short an address"));
    EXPECT_TRUE(FailsWith(10014, Winsock::gethostbyaddr(nullptr, 4, 2), "a host by null"));
}

}  // namespace
}  // namespace Conformance
