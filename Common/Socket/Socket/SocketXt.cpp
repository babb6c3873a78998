#include "VelNet/SocketXt.h"

#include "Socket/SocketLayerState.h"
#include "VelBase/Message.h"
#include "VelBase/WideLiteral.h"
#include "VelRegistry/Key.h"

#include <atomic>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

constexpr const unsigned short* ProductKey = "SOFTWARE\\Corvane"_wide;
constexpr const unsigned short* ServerKey = "Orrin Server"_wide;
constexpr const unsigned short* IpVersionValue = "IPVersion"_wide;

// Exactly this character: neither "06" nor "6 ".
bool IsSix(const unsigned short* text) noexcept {
    return text[0] == '6' && text[1] == 0;
}

bool IsSetToIpv6() {
    const VelRegistry::KeyOwner product(
        VelRegistry::OpenKeyFromRoot(VelRegistry::ROOT_LOCAL_MACHINE, ProductKey, false));
    if (product == nullptr || !product->HasSubKey(ServerKey)) return false;

    const VelRegistry::KeyOwner server(product->OpenSubKey(ServerKey, false));
    if (server == nullptr || !server->HasValue(IpVersionValue)) return false;
    return IsSix(server->ReadText(IpVersionValue).c_str());
}

SocketXt::ADDR_FAMILY ReadIpVersion() {
    try {
        return IsSetToIpv6() ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4;
    } catch (const VelBase::Message&) {
        return SocketXt::FAMILY_IPV4;  // unreadable counts as not set
    }
}

}  // namespace

const unsigned int SocketXt::MAXHOST;
const unsigned int SocketXt::MAXPORT;

SocketXt::SocketXt() = default;
SocketXt::SocketXt(const SocketXt& other) = default;
SocketXt::SocketXt(SocketXt&& other) noexcept = default;
SocketXt& SocketXt::operator=(const SocketXt& other) = default;
SocketXt& SocketXt::operator=(SocketXt&& other) noexcept = default;
SocketXt::~SocketXt() = default;

// Concurrent callers may each read the settings; they store the same value.
SocketXt::ADDR_FAMILY SocketXt::GetIpVersion() {
    if (g_socketLayer == nullptr) return ReadIpVersion();  // nowhere to cache it
    std::atomic<int>& cached = g_socketLayer->cachedIpVersion;
    const int known = cached.load(std::memory_order_relaxed);
    if (known != FAMILY_UNKNOWN) return static_cast<ADDR_FAMILY>(known);

    const ADDR_FAMILY version = ReadIpVersion();
    cached.store(version, std::memory_order_relaxed);
    return version;
}

}  // namespace VelNet
