#include <Socket/TraceRecords.h>

#include <new>
#include <numeric>
#include <string>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace VelNet {
namespace {

using namespace Scripted;

class FormatTraceBytesText : public PlatformTest {};

std::string Format(const std::string& bytes) {
    return FormatTraceBytes(bytes.data(), static_cast<unsigned int>(bytes.size())).c_str();
}

// Two digits, after six F from 0x80 on.
std::string Expected(unsigned int byte) {
    static constexpr char Digits[] = "0123456789ABCDEF";
    return std::string(byte < 0x80 ? "" : "FFFFFF") + Digits[byte / 16] + Digits[byte % 16];
}

// So many bytes: 0x00, 0x01, … 0xFF, 0x00, …
std::string Cycle(std::size_t count) {
    std::string bytes(count, '\0');
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

std::string ExpectedCycle(std::size_t count) {
    std::string text;
    for (std::size_t index = 0; index < count; ++index)
        text += Expected(index % 256);
    return text;
}

TEST_F(FormatTraceBytesText, LandmarksReadAsWidenedSignedBytes) {
    EXPECT_EQ(Format(std::string(1, '\0')), "00");
    EXPECT_EQ(Format("\x0A"), "0A");
    EXPECT_EQ(Format("\x7F"), "7F");
    EXPECT_EQ(Format("\x80"), "FFFFFF80");
    EXPECT_EQ(Format("\xC3"), "FFFFFFC3");
    EXPECT_EQ(Format("\xFF"), "FFFFFFFF");
    EXPECT_EQ(Format("A\r\n"), "410D0A");
}

TEST_F(FormatTraceBytesText, EachByteAloneHasTwoOrEightDigits) {
    for (unsigned int byte = 0; byte < 256; ++byte)
        EXPECT_EQ(Format(std::string(1, static_cast<char>(byte))), Expected(byte)) << byte;
}

TEST_F(FormatTraceBytesText, AllBytesFollowEachOtherWithNothingBetween) {
    EXPECT_EQ(Format(Cycle(256)), ExpectedCycle(256));
}

TEST_F(FormatTraceBytesText, NoBytesGiveTheEmptyText) {
    EXPECT_STREQ(FormatTraceBytes(nullptr, 0).c_str(), "");
    EXPECT_STREQ(FormatTraceBytes("abc", 0).c_str(), "");
}

TEST_F(FormatTraceBytesText, OnlyTheCountedBytesAreShown) {
    EXPECT_STREQ(FormatTraceBytes("abcdef", 2).c_str(), "6162");
}

TEST_F(FormatTraceBytesText, ZeroBytesEndNothing) {
    EXPECT_EQ(Format(std::string("\0a\0\0b", 5)), "0061000062");
}

TEST_F(FormatTraceBytesText, MebibyteIsShownWhole) {
    constexpr std::size_t Mebibyte = 1 << 20;
    EXPECT_TRUE(Format(Cycle(Mebibyte)) == ExpectedCycle(Mebibyte));
}

TEST_F(FormatTraceBytesText, RoomForTwoDigitsEachIsReservedAtOnce) {
    const std::string bytes(1000, 'x');
    const Allocations::Mark mark;
    const VelBase::ReturnString text = FormatTraceBytes(bytes.data(), 1000);
    const std::vector<std::size_t> sizes = mark.Sizes();
    ASSERT_EQ(sizes.size(), 2U) << "one for the working text, one for the result";
    EXPECT_EQ(sizes[0], 2 * 1000 + 1 + 1U) << "with the working text's own terminator";
    EXPECT_EQ(sizes[1], 2001U);
}

TEST_F(FormatTraceBytesText, ExhaustedMemoryIsTold) {
    const std::string bytes = Cycle(256);
    Support::ExpectBadAllocFromEveryAllocation(2, [&] { FormatTraceBytes(bytes.data(), 256); });
}

}  // namespace
}  // namespace VelNet
