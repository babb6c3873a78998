// What the doctor asks about settings.
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>

#include "Examining.h"
#include "SystemSettings.h"

namespace VelSockResolve {

namespace {

using VelNet::SocketAddress;
using VelNet::SocketXt;

std::string NameServers() {
    const auto servers = SocketAddress::GetLocalMachineDomainNameServer();
    std::string list;
    for (unsigned int index = 0; index < servers->GetCount(); ++index) {
        if (!list.empty()) list += ", ";
        list += servers->GetOctets(index).GetAddressString().c_str();
    }
    return list + ", read from " + VelSockTools::PlaceOfNameServers();
}

Finding NameServersFinding() {
    const std::string place = VelSockTools::PlaceOfNameServers();
    Finding finding = Try("name-servers", NameServers,
                          "name a server with an IPv4 address there; names are looked up all the "
                          "same, by the system");
    if (!finding.works) finding.text = "there is none of IPv4 in " + place;
    return finding;
}

Finding DomainFinding() {
    return Try("domain", [] {
        return std::string(SocketAddress::GetLocalMachineDomain().c_str()) + ", read from " +
               VelSockTools::PlaceOfNameServers();
    });
}

std::string Settings() {
    std::string text = VelSockTools::PlaceOfSettings();
    for (const std::string& line : VelSockTools::ListSettings())
        text += "; " + line;
    return text;
}

Finding ConfiguredVersion() {
    return Try("configured-ip-version", [] {
        const bool ipv6 = SocketXt::GetIpVersion() == SocketXt::FAMILY_IPV6;
        return std::string(ipv6 ? "IPv6" : "IPv4") +
               ", for programs that ask; sockets do not depend on it";
    });
}

}  // namespace

Findings ExamineSettings() {
    return {NameServersFinding(),
            DomainFinding(),
            {"settings", true, Settings(), ""},
            ConfiguredVersion()};
}

}  // namespace VelSockResolve
