#include "Questions.h"

#include <VelBase/TextConversions.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>

#include <algorithm>
#include <array>

#include "SystemNetwork.h"

namespace VelSockResolve {

namespace {

using VelNet::Octets;
using VelNet::OctetsCollection;
using VelNet::SocketAddress;
using VelNet::SocketAddressCache;

std::string TextOf(const Octets& octets) {
    return octets.GetAddressString().c_str();
}

Values TextsOf(const OctetsCollection& octets) {
    Values texts;
    for (unsigned int index = 0; index < octets.GetCount(); ++index) {
        texts.push_back(TextOf(octets.GetOctets(index)));
    }
    return texts;
}

Values AskForward(SocketAddressCache* cache, const std::string& name) {
    if (cache != nullptr) return {TextOf(cache->GetOctetsFromMachineName(name.c_str()))};
    return TextsOf(*SocketAddress::GetOctetsFromMachineName(name.c_str()));
}

[[noreturn]] void ThrowNoData(const std::string& text) {
    throw VelNet::Exception(VelBase::UTF8ToWideChar(text.c_str(), false).c_str(),
                            VelNet::SOCKET_ERR_NO_DATA);
}

[[noreturn]] void ThrowNoIpv6Address(const std::string& host) {
    ThrowNoData("There is no IPv6 address of " + host);
}

// The library lists IPv4 addresses alone; an extended socket gets these from the system's resolver.
// Why there is none, the library tells: it throws if there is no such host.
Values AskForwardIpv6(SocketAddressCache*, const std::string& name) {
    const std::string host = name.empty() ? SocketAddress::GetLocalMachineName().c_str() : name;
    Values texts;
    for (const VelSockTools::HostAddress& address : VelSockTools::FindAddresses(host).addresses) {
        if (address.family == VelNet::SocketXt::FAMILY_IPV6) texts.push_back(address.text);
    }
    if (!texts.empty()) return texts;
    SocketAddress::GetOctetsFromMachineName(host.c_str());
    ThrowNoIpv6Address(host);
}

// The library's addresses are IPv4 ones: the system's resolver knows names of the others.
Values AskReverseIpv6(const std::string& address) {
    const auto name = VelSockTools::FindName(address);
    if (!name) ThrowNoData("There is no name of " + address);
    return {*name};
}

Values AskReverse(SocketAddressCache* cache, const std::string& dotted) {
    if (dotted.find(':') != std::string::npos) return AskReverseIpv6(dotted);
    const Octets address = SocketAddress::ConvertDottedStringToOctets(dotted.c_str());
    const auto name = cache != nullptr ? cache->GetMachineNameFromOctets(address)
                                       : SocketAddress::GetMachineNameFromOctets(address);
    return {name.c_str()};
}

Values AskDotted(SocketAddressCache*, const std::string& text) {
    return {TextOf(SocketAddress::ConvertDottedStringToOctets(text.c_str()))};
}

Values AskLocalName(SocketAddressCache*, const std::string&) {
    return {SocketAddress::GetLocalMachineName().c_str()};
}

Values AskLocalDomain(SocketAddressCache*, const std::string&) {
    return {SocketAddress::GetLocalMachineDomain().c_str()};
}

Values AskNameServers(SocketAddressCache*, const std::string&) {
    return TextsOf(*SocketAddress::GetLocalMachineDomainNameServer());
}

Values AskIpVersion(SocketAddressCache*, const std::string&) {
    using VelNet::SocketXt;
    return {SocketXt::GetIpVersion() == SocketXt::FAMILY_IPV6 ? "6" : "4"};
}

constexpr std::array<Question, 7> Questions{{
    {"forward", "addresses", Shape::Texts, true, true, AskForward, AskForwardIpv6},
    {"reverse", "name", Shape::Text, true, true, AskReverse},
    {"dotted", "address", Shape::Text, true, false, AskDotted},
    {"local-name", "name", Shape::Text, false, false, AskLocalName},
    {"local-domain", "domain", Shape::Text, false, false, AskLocalDomain},
    {"name-servers", "nameServers", Shape::Texts, false, false, AskNameServers},
    {"ip-version", "ipVersion", Shape::Number, false, false, AskIpVersion},
}};

}  // namespace

const Question* FindQuestion(const std::string& name) {
    const auto* const question =
        std::find_if(Questions.begin(), Questions.end(),
                     [&](const Question& each) { return each.name == name; });
    return question == Questions.end() ? nullptr : question;
}

}  // namespace VelSockResolve
