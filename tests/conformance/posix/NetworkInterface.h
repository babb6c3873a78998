// An interface of the network of a scene with a network of its own.
#pragma once

#include <net/if.h>
#include <sys/socket.h>

namespace Conformance {

// Leads nowhere, and has no address but those that it is given.
class NetworkInterface {
public:
    explicit NetworkInterface(const char* name);
    ~NetworkInterface();
    NetworkInterface(const NetworkInterface&) = delete;
    NetworkInterface& operator=(const NetworkInterface&) = delete;

    bool IsMade() const { return made_; }
    unsigned int Index() const { return ::if_nametoindex(request_.ifr_name); }

    void AddIpv4(const char* text);
    void AddIpv6(const char* text);
    void TakeDown();

private:
    bool Set(const char* setting, int value) const;
    bool Raise();

    int ipv4_ = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    int ipv6_ = ::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ifreq request_ = {};
    bool made_ = false;
};

}  // namespace Conformance
