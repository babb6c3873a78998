// The strings that the extended socket uses for addresses.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/TraceRecords.h"
#include "VelBase/ReturnString.h"
#include "VelBase/TextRoom.h"
#include "VelNet/SocketXt.h"

#include <string>
#include <utility>

namespace VelNet {

// Stand for the address of a peer that the system does not report.
inline constexpr char NoHost[] = "no-ip";
inline constexpr char NoPort[] = "no-port";

// Returns the local host's name in the system's code page.
VelBase::ReturnString NarrowComputerName();

// "<host>:<port>"
std::string JoinEndpoint(const std::string& host, const std::string& port);

// A peer's numeric address. What the caller gets of it is allocated before the system is asked for
// anything that would be lost if memory ran out.
class PeerTexts {
public:
    // The texts are empty; what is behind their ends is not initialized.
    PeerTexts() { host_[0] = port_[0] = '\0'; }

    char* Host() noexcept { return host_; }
    char* Port() noexcept { return port_; }

    // Once each.
    VelBase::ReturnString HandOverHost() { return hostRoom_.HandOver(host_); }
    VelBase::ReturnString HandOverPort() { return portRoom_.HandOver(port_); }

private:
    // The longest numeric host is an IPv6 address with its scope.
    static constexpr std::size_t LongestHost =
        sizeof "ffff:ffff:ffff:ffff:ffff:ffff:255.255.255.255%4294967295";
    static constexpr std::size_t LongestPort = sizeof "65535";

    char host_[SocketXt::MAXHOST];
    char port_[SocketXt::MAXPORT];
    VelBase::TextRoom hostRoom_{LongestHost};
    VelBase::TextRoom portRoom_{LongestPort};
};

// Adds the flags to those for numeric strings and calls getnameinfo. Returns false, with the last
// error set, if the system cannot tell the address.
bool TellPeer(const Winsock::AddressStorage& storage, int flags, PeerTexts& texts);

// The endpoints of a record: host and port strings of both sides.
class TextEndpoints final : public TraceEndpoints {
public:
    TextEndpoints(unsigned int connection, std::string localHost, std::string localPort,
                  std::string remoteHost, std::string remotePort) noexcept
        : TraceEndpoints(connection),
          texts_{std::move(localHost), std::move(localPort), std::move(remoteHost),
                 std::move(remotePort)} {}

    void FeedTo(VelResource::MessageFormatter& formatter) const override;

private:
    std::string texts_[4];
};

}  // namespace VelNet
