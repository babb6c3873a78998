#include "scripted/AddressBytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

namespace Scripted {

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

}  // namespace Scripted
