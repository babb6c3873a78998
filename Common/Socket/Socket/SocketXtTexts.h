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

// Buffers for a peer's numeric address. Allocated before the system is asked for anything that
// would be lost if memory ran out.
struct PeerTexts {
    VelBase::TextRoom host{SocketXt::MAXHOST};
    VelBase::TextRoom port{SocketXt::MAXPORT};
};

// Adds the flags to those for numeric strings and calls getnameinfo. Returns false, with the last
// error set, if the system cannot tell the address.
bool TellPeer(const Winsock::AddressStorage& storage, int flags, PeerTexts& texts);

// The endpoints of a record: host and port strings of both sides.
class TextEndpoints final : public TraceEndpoints {
public:
    TextEndpoints(std::string localHost, std::string localPort, std::string remoteHost,
                  std::string remotePort) noexcept
        : texts_{std::move(localHost), std::move(localPort), std::move(remoteHost),
                 std::move(remotePort)} {}

    void FeedTo(VelResource::MessageFormatter& formatter) const override;

private:
    std::string texts_[4];
};

}  // namespace VelNet
