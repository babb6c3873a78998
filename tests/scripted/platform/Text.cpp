#include "scripted/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <sstream>

namespace Scripted {

std::u16string Text(const unsigned short* text) {
    if (text == nullptr) return u"(null)";
    std::u16string units;
    for (; *text != 0; ++text)
        units += static_cast<char16_t>(*text);
    return units;
}

std::vector<unsigned short> Wide(std::u16string_view text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

std::vector<unsigned short> Wide(const char* text) {
    return Wide(std::u16string(text, text + std::strlen(text)));
}

std::string AddressBytes(const std::string& dotted) {
    std::istringstream numbers(dotted + '.');
    std::string bytes;
    unsigned int number = 0;
    for (char point = 0; numbers >> number >> point;)
        bytes += static_cast<char>(number);
    EXPECT_EQ(bytes.size(), 4U) << dotted << " is no dotted address";
    return bytes;
}

std::string SocketAddressBytes(const std::string& dotted, unsigned short port) {
    std::string bytes("\2\0", 2);
    bytes += static_cast<char>(port / 256);
    bytes += static_cast<char>(port % 256);
    return bytes + AddressBytes(dotted) + std::string(8, '\0');
}

namespace {

std::string GroupBytes(const std::string& groups) {
    std::istringstream numbers(groups);
    std::string bytes;
    for (std::string group; std::getline(numbers, group, ':');) {
        const unsigned long value = std::stoul(group, nullptr, 16);
        bytes += static_cast<char>(value / 256);
        bytes += static_cast<char>(value % 256);
    }
    return bytes;
}

template <class Value>
std::string ValueBytes(Value value) {
    std::string bytes(sizeof value, '\0');
    std::memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

}  // namespace

std::string Ipv6AddressBytes(const std::string& text) {
    const std::size_t gap = text.find("::");
    const std::string head = GroupBytes(text.substr(0, gap));
    const std::string tail = gap == std::string::npos ? "" : GroupBytes(text.substr(gap + 2));
    const std::size_t written = head.size() + tail.size();
    EXPECT_TRUE(gap == std::string::npos ? written == 16 : written < 16)
        << text << " is no IPv6 address";
    return head + std::string(16 - std::min<std::size_t>(written, 16), '\0') + tail;
}

std::string SocketAddressBytesIpv6(const std::string& text, unsigned short port, unsigned int scope,
                                   unsigned int flowInformation) {
    std::string bytes("\x17\0", 2);
    bytes += static_cast<char>(port / 256);
    bytes += static_cast<char>(port % 256);
    return bytes + ValueBytes(flowInformation) + Ipv6AddressBytes(text) + ValueBytes(scope);
}

std::vector<int> ErrorNumbers() {
    return {
        // what the table knows
        10000, 10013, 10048, 10049, 10047, 10037, 10009, 10053, 10061, 10054, 10039, 10069, 10014,
        10064, 10065, 10036, 10004, 10022, 10056, 10062, 10024, 10040, 10063, 10050, 10052, 10051,
        10055, 10042, 10057, 10066, 10038, 10045, 10046, 10067, 43, 10041, 10071, 10058, 44, 10070,
        10060, 10059, 10068, 10035, 11001, 10093, 11004, 11003, 10091, 11002, 92, -2,
        // what it does not
        0, -1, 8, 11, 122, 10043, 10044, 10092, 10109, 12345, 65536, 65536 + 10061, 65537, INT_MIN,
        INT_MAX};
}

}  // namespace Scripted
