// The value SocketAddress.
#include <climits>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

class SocketAddressValue : public PlatformTest {};

static_assert(
    std::is_same_v<decltype(std::declval<const SocketAddress&>().GetPort()), unsigned short>);
static_assert(std::is_same_v<decltype(std::declval<const SocketAddress&>().GetOctets()), Octets>);
static_assert(std::is_constructible_v<SocketAddress, Octets, unsigned int>);

TEST_F(SocketAddressValue, DefaultIsAllZero) {
    EXPECT_EQ(EndpointText(SocketAddress()), "0.0.0.0:0");
}

TEST_F(SocketAddressValue, KeepsAddressAndPort) {
    const SocketAddress address(Octets(10, 1, 2, 3), 8080);
    EXPECT_EQ(address.GetOctets(), Octets(10, 1, 2, 3));
    EXPECT_EQ(address.GetPort(), 8080);
}

TEST_F(SocketAddressValue, KeepsTheLowSixteenBitsOfThePort) {
    const std::pair<unsigned int, unsigned short> ports[] = {
        {0, 0},        {1, 1},          {65535, 65535},       {65536, 0},        {65537, 1},
        {70000, 4464}, {131071, 65535}, {0x12345678, 0x5678}, {UINT_MAX, 65535},
    };
    for (const auto& [given, kept] : ports)
        EXPECT_EQ(SocketAddress(Octets(), given).GetPort(), kept) << given;
}

TEST_F(SocketAddressValue, OctetsAreACopy) {
    const SocketAddress address(Octets(10, 1, 2, 3), 80);
    Octets octets = address.GetOctets();
    octets = Octets(1, 1, 1, 1);
    EXPECT_EQ(EndpointText(address), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, ArgumentIsNotKept) {
    Octets octets(10, 1, 2, 3);
    const SocketAddress address(octets, 80);
    octets = Octets(1, 1, 1, 1);
    EXPECT_EQ(EndpointText(address), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, CopyIsIndependent) {
    SocketAddress original(Octets(10, 1, 2, 3), 80);
    SocketAddress copy(original);
    original = SocketAddress(Octets(1, 1, 1, 1), 1);
    EXPECT_EQ(EndpointText(copy), "10.1.2.3:80");
    copy = SocketAddress(Octets(2, 2, 2, 2), 2);
    EXPECT_EQ(EndpointText(original), "1.1.1.1:1");
}

TEST_F(SocketAddressValue, CopyOutlivesItsOriginal) {
    auto original = std::make_unique<SocketAddress>(Octets(10, 1, 2, 3), 80);
    const SocketAddress copy(*original);
    original = nullptr;
    EXPECT_EQ(EndpointText(copy), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, AssignmentCopiesBothAndReturnsTheTarget) {
    SocketAddress target(Octets(1, 1, 1, 1), 1);
    SocketAddress source(Octets(10, 1, 2, 3), 80);
    EXPECT_EQ(&(target = source), &target);
    source = SocketAddress();
    EXPECT_EQ(EndpointText(target), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, AssignmentAllocatesNothing) {
    SocketAddress target;
    const SocketAddress source(Octets(10, 1, 2, 3), 80);
    static_assert(std::is_nothrow_copy_assignable_v<SocketAddress>);
    const Allocations::Mark mark;
    target = source;
    EXPECT_EQ(mark.Requests(), 0U);
    EXPECT_EQ(EndpointText(target), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, SelfAssignmentIsHarmless) {
    SocketAddress address(Octets(10, 1, 2, 3), 80);
    const SocketAddress& itself = address;
    address = itself;
    EXPECT_EQ(EndpointText(address), "10.1.2.3:80");
}

TEST_F(SocketAddressValue, EveryConstructionGivesItsMemoryBack) {
    const Allocations::Mark mark;
    {
        const SocketAddress byDefault;
        const SocketAddress made(Octets(10, 1, 2, 3), 80);
        const SocketAddress copy(made);
        EXPECT_GT(mark.LiveBlocks(), 0);
    }
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(SocketAddressValue, DestructorFreesTheRecordAndNullsThePointer) {
    alignas(SocketAddress) unsigned char storage[sizeof(SocketAddress)];
    const Allocations::Mark mark;
    SocketAddress* const address = new (storage) SocketAddress(Octets(10, 1, 2, 3), 80);
    EXPECT_GT(mark.LiveBlocks(), 0);
    std::destroy_at(address);
    EXPECT_EQ(mark.LiveBlocks(), 0);
    const unsigned char* pointer = storage;
    std::memcpy(&pointer, storage, sizeof pointer);
    EXPECT_EQ(pointer, nullptr);
}

TEST_F(SocketAddressValue, ExhaustedMemoryLeavesNothing) {
    const Octets octets(10, 1, 2, 3);
    const SocketAddress original(octets, 80);
    const Allocations::Mark mark;
    std::size_t requests = 0;
    const auto failEach = [&](const auto& operation) {
        for (std::size_t n = 1; RunsOutOfMemory(n, operation); ++n)
            ++requests;
        EXPECT_EQ(mark.LiveBlocks(), 0);
    };
    failEach([] { const SocketAddress byDefault; });
    failEach([&] { const SocketAddress made(octets, 80); });
    failEach([&] { const SocketAddress copy(original); });
    failEach([&] { const Octets copy(original.GetOctets()); });
    EXPECT_GE(requests, 6U);
}

TEST_F(SocketAddressValue, AsksTheSystemForNothing) {
    const SocketAddress address(Octets(10, 1, 2, 3), 80);
    EXPECT_EQ(EndpointText(SocketAddress(address)), "10.1.2.3:80");
    EXPECT_EQ(Transcript(), std::vector<std::string>());
}

}  // namespace
}  // namespace SocketTests
