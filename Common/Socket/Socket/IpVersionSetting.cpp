#include "Socket/IpVersionSetting.h"

#include "VelBase/Message.h"
#include "VelBase/WideLiteral.h"
#include "VelRegistry/Key.h"

namespace VelNet {

using VelBase::operator""_wide;

namespace {

constexpr const unsigned short* ProductKey = "SOFTWARE\\Corvane"_wide;
constexpr const unsigned short* ServerKey = "Orrin Server"_wide;
constexpr const unsigned short* IpVersionValue = "IPVersion"_wide;

// Required (IpVersion.EveryOtherValueIsIpv4): exactly this character, neither "06" nor "6 ".
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

}  // namespace

SocketXt::ADDR_FAMILY ReadIpVersion() {
    try {
        return IsSetToIpv6() ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4;
    } catch (const VelBase::Message&) {
        return SocketXt::FAMILY_IPV4;  // unreadable counts as not set
    }
}

}  // namespace VelNet
