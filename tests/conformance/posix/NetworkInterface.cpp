#include "NetworkInterface.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <string>

namespace Conformance {

namespace {

// The request that gives an interface an IPv6 address, as the system reads it.
struct Ipv6Request {
    in6_addr address;
    std::uint32_t prefixLength;
    int interfaceIndex;
};

}  // namespace

NetworkInterface::NetworkInterface(const char* name) {
    std::strcpy(request_.ifr_name, name);
    made_ = ::ioctl(ipv4_, SIOCBRADDBR, name) == 0 && Set("addr_gen_mode", 1) &&
            Set("accept_dad", 0) && Raise();
}

NetworkInterface::~NetworkInterface() {
    ::close(ipv4_);
    ::close(ipv6_);
}

void NetworkInterface::AddIpv4(const char* text) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    ::inet_pton(AF_INET, text, &address.sin_addr);
    std::memcpy(&request_.ifr_addr, &address, sizeof address);
    EXPECT_EQ(::ioctl(ipv4_, SIOCSIFADDR, &request_), 0);
}

void NetworkInterface::AddIpv6(const char* text) {
    Ipv6Request request = {};
    ::inet_pton(AF_INET6, text, &request.address);
    request.prefixLength = 64;
    request.interfaceIndex = static_cast<int>(Index());
    EXPECT_EQ(::ioctl(ipv6_, SIOCSIFADDR, &request), 0);
}

void NetworkInterface::TakeDown() {
    request_.ifr_flags = 0;
    EXPECT_EQ(::ioctl(ipv4_, SIOCSIFFLAGS, &request_), 0);
}

bool NetworkInterface::Set(const char* setting, int value) const {
    const std::string folder = "/proc/sys/net/ipv6/conf/";
    std::ofstream file(folder + request_.ifr_name + "/" + setting);
    file << value << std::flush;
    return file.good();
}

bool NetworkInterface::Raise() {
    request_.ifr_flags = IFF_UP;
    return ::ioctl(ipv4_, SIOCSIFFLAGS, &request_) == 0;
}

}  // namespace Conformance
