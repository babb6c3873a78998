// The texts that the extended socket has for addresses.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/TraceRecords.h"
#include "VelBase/ReturnString.h"
#include "VelBase/TextRoom.h"
#include "VelNet/SocketXt.h"

#include <string>
#include <utility>

namespace VelNet {

// What stands for the address of a peer that the system cannot tell.
inline constexpr char NoHost[] = "no-ip";
inline constexpr char NoPort[] = "no-port";

// This computer's name in the system's code page.
VelBase::ReturnString NarrowComputerName();

// "<host>:<port>"
std::string JoinEndpoint(const std::string& host, const std::string& port);

// Room for the numeric texts of a peer. Made before the system is asked for anything that must not
// be lost for want of memory.
struct PeerTexts {
    VelBase::TextRoom host{SocketXt::MAXHOST};
    VelBase::TextRoom port{SocketXt::MAXPORT};
};

// The flags go to getnameinfo beside those for numeric texts. False, with the system's last error
// set, when the system cannot tell the peer.
bool TellPeer(const Winsock::AddressStorage& storage, int flags, PeerTexts& texts);

// The endpoints of a record, as texts all four.
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
