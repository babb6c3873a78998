// Addresses and ends as the records write them.
#include "velsock-trace/Endpoint.h"

#include <gtest/gtest.h>

namespace {

using namespace VelSockTrace;

std::array<unsigned char, 16> BytesOf(const char* text) {
    const auto address = ReadIpAddress(text);
    return address ? address->bytes : std::array<unsigned char, 16>{0xEE};
}

TEST(EndpointAddress, OfBothVersionsIsRead) {
    EXPECT_EQ(BytesOf("127.0.0.1"), (std::array<unsigned char, 16>{127, 0, 0, 1}));
    EXPECT_EQ(BytesOf("::1").back(), 1);
    EXPECT_EQ(BytesOf("::"), (std::array<unsigned char, 16>{}));
    EXPECT_EQ(
        BytesOf("2001:db8::a:1"),
        (std::array<unsigned char, 16>{0x20, 1, 0xD, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 10, 0, 1}));
    EXPECT_EQ(BytesOf("1:2:3:4:5:6:7:8"),
              (std::array<unsigned char, 16>{0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6, 0, 7, 0, 8}));
    EXPECT_EQ(
        BytesOf("::ffff:10.0.0.1"),
        (std::array<unsigned char, 16>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 10, 0, 0, 1}));
    EXPECT_EQ(BytesOf("fe80::1%eth0"), BytesOf("fe80::1"));
}

TEST(EndpointAddress, OfAnotherFormIsNone) {
    for (const char* const text : {"", "vm", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.x", ":",
                                   ":::", "1::2::3", "1:2", "12345::", "1:2:3:4:5:6:7:8:9",
                                   "::1.2.3", "1:2:3:4:5:6:7:1.2.3.4", "::g", "1:2:3:4:5:6:7:"})
        EXPECT_FALSE(ReadIpAddress(text)) << text;
}

TEST(EndpointEnds, AreReadFromARecord) {
    const Ends ends = ReadEnds("vm (Random Port), Remote address: ::1 (45366)");
    EXPECT_EQ(ends.local.host, "vm");
    EXPECT_EQ(ends.local.port, 0);
    EXPECT_FALSE(ends.local.IsExact());
    EXPECT_TRUE(ends.remote.IsExact());
    EXPECT_EQ(Name(ends.remote), "[::1]:45366");
    EXPECT_EQ(Name(ends.local), "vm:?");
    EXPECT_EQ(Name(ReadEnds(" (), Remote address:  ()").local), "?:?");
    EXPECT_EQ(Name(ReadEnds("0.0.0.0 (99999), Remote address: x").local), "0.0.0.0:?");
}

TEST(EndpointComparison, UnknownPartsMayBeAnything) {
    const Endpoint known("10.0.0.1", "80");
    EXPECT_TRUE(MayBeSame(known, Endpoint("vm", "0")));
    EXPECT_FALSE(HaveInCommon(known, Endpoint("vm", "0")));
    EXPECT_TRUE(HaveInCommon(known, Endpoint("0.0.0.0", "80")));
    EXPECT_FALSE(MayBeSame(known, Endpoint("10.0.0.2", "0")));
    EXPECT_FALSE(MayBeSame(known, Endpoint("vm", "81")));
    EXPECT_EQ(Completed(Endpoint("vm", "0"), known), known);
    EXPECT_EQ(ExactKey(known, Endpoint("::1", "2")), ExactKey(Endpoint("::1", "2"), known));
}

}  // namespace
