#include <VelNet/Octets.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {
namespace {

using Scripted::Allocations::FailNth;
using Scripted::Allocations::Mark;
using VelNet::Octets;
using Sizes = std::vector<std::size_t>;

class OctetsValue : public Scripted::PlatformTest {};

std::array<int, 4> Numbers(const Octets& octets) {
    return {octets.GetOctet1(), octets.GetOctet2(), octets.GetOctet3(), octets.GetOctet4()};
}

std::string Dotted(const Octets& octets) {
    return octets.GetAddressString().c_str();
}

// The only thing that an object holds.
const unsigned char* BlockOf(const Octets& octets) {
    const unsigned char* block = nullptr;
    std::memcpy(&block, &octets, sizeof block);
    return block;
}

// Interesting words and random ones, the same in each run.
std::vector<unsigned int> Words() {
    std::vector<unsigned int> words = {0,          1,          0xFF,       0x0100007F, 0x7F000001,
                                       0x80000000, 0x7FFFFFFF, 0xFF000000, 0x00FF0000, 0x0000FF00,
                                       0xFFFFFFFF, 0x01020304, 0xFFFFFF7F, 0x12345678};
    std::linear_congruential_engine<unsigned int, 48271, 0, 2147483647> random(20240229);
    for (int count = 0; count < 10000; ++count)
        words.push_back(random() * 2654435761U);
    return words;
}

unsigned int Reversed(unsigned int word) {
    return word << 24 | (word << 8 & 0x00FF0000U) | (word >> 8 & 0x0000FF00U) | word >> 24;
}

// The constructor must ask for the four bytes alone, and end with the error when it gets none.
template <class Construction>
void ExpectOneBlockOfFourBytes(Construction construct) {
    {
        const Mark mark;
        const Octets octets = construct();
        const long long liveBytes = mark.LiveBytes();
        const Sizes sizes = mark.Sizes();
        EXPECT_EQ(sizes, Sizes{4});
        EXPECT_EQ(liveBytes, 4);
    }
    const Mark mark;
    const FailNth failing(1);
    EXPECT_THROW(construct(), std::bad_alloc);
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(OctetsValue, IsOnePointer) {
    static_assert(sizeof(Octets) == sizeof(void*));
    static_assert(!std::is_polymorphic_v<Octets>);
    const Octets octets(1, 2, 3, 4);
    const std::array<unsigned char, 4> expected = {1, 2, 3, 4};
    EXPECT_EQ(std::memcmp(BlockOf(octets), expected.data(), 4), 0);
}

TEST_F(OctetsValue, DefaultIsAllZero) {
    const Octets octets;
    EXPECT_EQ(Numbers(octets), (std::array{0, 0, 0, 0}));
    EXPECT_EQ(Dotted(octets), "0.0.0.0");
    EXPECT_EQ(octets.GetAddress(), 0U);
    EXPECT_TRUE(octets == Octets(0, 0, 0, 0));
}

TEST_F(OctetsValue, FourNumbersKeepTheirOrder) {
    EXPECT_EQ(Numbers(Octets(10, 0, 0, 1)), (std::array{10, 0, 0, 1}));
    EXPECT_EQ(Numbers(Octets(1, 2, 3, 4)), (std::array{1, 2, 3, 4}));
    EXPECT_EQ(Numbers(Octets(255, 254, 253, 252)), (std::array{255, 254, 253, 252}));
}

TEST_F(OctetsValue, EveryValueOfEveryOctetIsKept) {
    for (int value = 0; value <= 255; ++value) {
        const auto octet = static_cast<unsigned char>(value);
        const auto other = static_cast<unsigned char>(255 - value);
        EXPECT_EQ(Numbers(Octets(octet, other, octet, other)),
                  (std::array{value, 255 - value, value, 255 - value}));
        EXPECT_EQ(Numbers(Octets(other, octet, other, octet)),
                  (std::array{255 - value, value, 255 - value, value}));
    }
}

TEST_F(OctetsValue, WordGivesItsLowestByteAsTheFirstOctet) {
    EXPECT_EQ(Numbers(Octets(0x04030201U)), (std::array{1, 2, 3, 4}));
    EXPECT_EQ(Numbers(Octets(0xFCFDFEFFU)), (std::array{255, 254, 253, 252}));
}

TEST_F(OctetsValue, WordOfTheLoopbackAddressReadsAsItIsWritten) {
    const Octets octets(0x0100007FU);
    EXPECT_EQ(Dotted(octets), "127.0.0.1");
    EXPECT_EQ(octets.GetAddress(), 0x7F000001U);
}

TEST_F(OctetsValue, AddressHasTheFirstOctetHighest) {
    EXPECT_EQ(Octets(10, 0, 0, 1).GetAddress(), 0x0A000001U);
    EXPECT_EQ(Octets(1, 2, 3, 4).GetAddress(), 0x01020304U);
    EXPECT_EQ(Octets(255, 128, 129, 254).GetAddress(), 0xFF8081FEU);
    EXPECT_EQ(Octets(255, 255, 255, 255).GetAddress(), 0xFFFFFFFFU);
    static_assert(std::is_same_v<decltype(Octets().GetAddress()), unsigned int>);
}

TEST_F(OctetsValue, AddressIsTheWordReversed) {
    for (const unsigned int word : Words())
        ASSERT_EQ(Octets(word).GetAddress(), Reversed(word)) << word;
}

TEST_F(OctetsValue, WordIsConvertedImplicitly) {
    static_assert(std::is_convertible_v<unsigned int, Octets>);
    const Octets octets = 0x0100007FU;
    EXPECT_EQ(Dotted(octets), "127.0.0.1");
}

TEST_F(OctetsValue, DottedTextHasNoLeadingZeros) {
    EXPECT_EQ(Dotted(Octets(1, 20, 3, 0)), "1.20.3.0");
    EXPECT_EQ(Dotted(Octets(8, 64, 100, 9)), "8.64.100.9");
}

TEST_F(OctetsValue, LongestDottedTextHasFifteenCharacters) {
    EXPECT_EQ(Dotted(Octets(255, 255, 255, 255)), "255.255.255.255");
    EXPECT_EQ(Dotted(Octets(100, 200, 128, 249)), "100.200.128.249");
}

TEST_F(OctetsValue, EveryOctetIsWrittenAsDecimalNumber) {
    for (int value = 0; value <= 255; ++value) {
        const std::string number = std::to_string(value);
        const auto octet = static_cast<unsigned char>(value);
        EXPECT_EQ(Dotted(Octets(octet, octet, octet, octet)),
                  number + '.' + number + '.' + number + '.' + number);
    }
}

TEST_F(OctetsValue, EveryConstructorAllocatesOneBlockOfFourBytes) {
    const Octets source(1, 2, 3, 4);
    ExpectOneBlockOfFourBytes([] { return Octets(); });
    ExpectOneBlockOfFourBytes([] { return Octets(1, 2, 3, 4); });
    ExpectOneBlockOfFourBytes([] { return Octets(0x01020304U); });
    ExpectOneBlockOfFourBytes([&] { return Octets(source); });
}

TEST_F(OctetsValue, DestructorFreesTheBlockAndNullsThePointer) {
    alignas(Octets) unsigned char storage[sizeof(Octets)];
    const Mark mark;
    Octets* const octets = new (storage) Octets(9, 8, 7, 6);
    EXPECT_EQ(mark.LiveBlocks(), 1);
    std::destroy_at(octets);
    EXPECT_EQ(mark.LiveBlocks(), 0);
    const unsigned char* pointer = storage;
    std::memcpy(&pointer, storage, sizeof pointer);
    EXPECT_EQ(pointer, nullptr);
}

TEST_F(OctetsValue, CopyHasABlockOfItsOwn) {
    Octets source(1, 2, 3, 4);
    const Octets copy(source);
    EXPECT_NE(BlockOf(copy), BlockOf(source));
    EXPECT_EQ(Numbers(copy), (std::array{1, 2, 3, 4}));
    source = Octets(5, 6, 7, 8);
    EXPECT_EQ(Numbers(copy), (std::array{1, 2, 3, 4}));
}

TEST_F(OctetsValue, MovedFromObjectStaysWhole) {
    Octets source(1, 2, 3, 4);
    const Octets taken(std::move(source));
    EXPECT_EQ(Numbers(source), (std::array{1, 2, 3, 4}));
    EXPECT_EQ(Numbers(taken), (std::array{1, 2, 3, 4}));
}

TEST_F(OctetsValue, AssignmentCopiesIntoTheOwnBlock) {
    Octets source(1, 2, 3, 4);
    Octets target(5, 6, 7, 8);
    const unsigned char* const block = BlockOf(target);
    const Mark mark;
    Octets& result = (target = source);
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(BlockOf(target), block);
    EXPECT_EQ(Numbers(target), (std::array{1, 2, 3, 4}));

    source = Octets(9, 9, 9, 9);
    EXPECT_EQ(Numbers(target), (std::array{1, 2, 3, 4}));
    target = Octets(7, 7, 7, 7);
    EXPECT_EQ(Numbers(source), (std::array{9, 9, 9, 9}));
}

TEST_F(OctetsValue, AssignmentFromATemporaryKeepsTheOwnBlock) {
    Octets target(5, 6, 7, 8);
    const unsigned char* const block = BlockOf(target);
    target = Octets(1, 2, 3, 4);
    EXPECT_EQ(BlockOf(target), block);
    EXPECT_EQ(Numbers(target), (std::array{1, 2, 3, 4}));
}

TEST_F(OctetsValue, SelfAssignmentChangesNothing) {
    Octets octets(1, 2, 3, 4);
    const Octets& itself = octets;
    octets = itself;
    EXPECT_EQ(Numbers(octets), (std::array{1, 2, 3, 4}));
}

TEST_F(OctetsValue, EqualityNeedsAllFourOctets) {
    const Octets octets(1, 2, 3, 4);
    EXPECT_TRUE(octets == octets);
    EXPECT_TRUE(octets == Octets(1, 2, 3, 4));
    EXPECT_TRUE(octets == Octets(0x04030201U));
    EXPECT_FALSE(octets == Octets(0, 2, 3, 4));
    EXPECT_FALSE(octets == Octets(1, 0, 3, 4));
    EXPECT_FALSE(octets == Octets(1, 2, 0, 4));
    EXPECT_FALSE(octets == Octets(1, 2, 3, 0));
    EXPECT_FALSE(octets == Octets(4, 3, 2, 1));
}

TEST_F(OctetsValue, EqualityGoesOnBehindAZeroOctet) {
    EXPECT_FALSE(Octets(0, 0, 0, 1) == Octets(0, 0, 0, 2));
    EXPECT_FALSE(Octets(10, 0, 1, 1) == Octets(10, 0, 2, 1));
}

TEST_F(OctetsValue, DottedTextFailsWithBadAllocAndLeaksNothing) {
    const Octets octets(1, 2, 3, 4);
    const Mark mark;
    const FailNth failing(1);
    EXPECT_THROW(octets.GetAddressString(), std::bad_alloc);
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

}  // namespace
}  // namespace FoundationTests
