// What start-up writes, octet by octet: programs for the first version read more of it.
#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "conformance/Scene.h"

namespace Conformance {
namespace {

Winsock::StartupData Described(unsigned short version) {
    Winsock::StartupData data;
    std::memset(static_cast<void*>(&data), 0x55, sizeof data);
    EXPECT_EQ(Winsock::WSAStartup(version, &data), 0);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
    return data;
}

using Versions = std::initializer_list<unsigned short>;

template <std::size_t Size>
void ExpectTextAndZeros(const char (&room)[Size], const std::string& text) {
    EXPECT_EQ(std::string(room, text.size()), text);
    const auto* rest = room + text.size();
    EXPECT_TRUE(std::all_of(rest, room + Size, [](char byte) { return byte == 0; }));
}

TEST(StartUpDescription, IsWrittenWhole) {
    const Winsock::StartupData data = Described(0x202);
    ExpectTextAndZeros(data.description, "WinSock 2.0");
    ExpectTextAndZeros(data.systemStatus, "Running");
    EXPECT_EQ(data.vendorInformation, nullptr);
}

TEST(StartUpDescription, TellsItsLimitsToProgramsForTheFirstVersionOnly) {
    for (const unsigned short version : Versions{0x001, 0x101}) {
        EXPECT_EQ(Described(version).maximumSockets, 32767);
        EXPECT_EQ(Described(version).maximumDatagram, 65467);
    }
    for (const unsigned short version : Versions{0x002, 0x202}) {
        EXPECT_EQ(Described(version).maximumSockets, 0);
        EXPECT_EQ(Described(version).maximumDatagram, 0);
    }
}

}  // namespace
}  // namespace Conformance
