#include "VelNet/SocketXt.h"

#include "Socket/IpVersionSetting.h"
#include "Socket/SocketLayerState.h"

#include <atomic>

namespace VelNet {

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
