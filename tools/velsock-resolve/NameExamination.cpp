// What the doctor asks about names.
#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>

#include <algorithm>

#include "Examining.h"
#include "SystemNetwork.h"

namespace VelSockResolve {

namespace {

using VelNet::Socket;
using VelNet::SocketXt;
using VelSockTools::HostAddress;
using VelSockTools::LookUp;

bool IsLoopback(const HostAddress& address) {
    return address.text == "::1" || address.text.starts_with("127.");
}

bool IsOnInterface(const HostAddress& address) {
    try {
        const auto socket =
            VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP, address.family);
        socket->Bind(address.text.c_str(), "0");
        return true;
    } catch (const VelNet::Exception&) {
        return false;
    }
}

std::string ListOf(const LookUp& found) {
    std::string list;
    for (const HostAddress& address : found.addresses) {
        if (!list.empty()) list += ", ";
        list += address.text;
        if (IsLoopback(address)) list += " (loopback)";
        if (!IsOnInterface(address)) list += " (of no interface here)";
    }
    return list;
}

std::string HostsLine(const std::string& name) {
    return "add a line with an address of an interface and " + name + " to the hosts file";
}

// The library can do without, so nothing of it fails.
Finding NameWithoutAddress(const std::string& name) {
    return {"name", true,
            name + ", which no resolver knows: the addresses of the interfaces stand for it",
            "so that it depends on no name server, " + HostsLine(name)};
}

Finding NameFinding(const std::string& name, const LookUp& found) {
    if (found.addresses.empty()) return NameWithoutAddress(name);
    const bool usable = std::all_of(found.addresses.begin(), found.addresses.end(), IsOnInterface);
    return {"name", usable, name + ", with the addresses " + ListOf(found),
            usable ? "" : HostsLine(name) + " in place of what no interface has"};
}

std::string WhyVersion(const std::string& name, const LookUp& found) {
    const bool isKnown = !std::all_of(found.addresses.begin(), found.addresses.end(), IsLoopback);
    if (isKnown) return "the first address of " + name + " is " + found.addresses.front().text;
    return "no resolver has an address of an interface for " + name +
           ", and so the interfaces' own addresses decide";
}

Finding VersionFinding(const std::string& name, const LookUp& found) {
    return Try("ip-version", [&] {
        const auto socket = VelNet::CreateSocketXt(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
        const bool ipv6 = socket->GetAddressFamily() == SocketXt::FAMILY_IPV6;
        return std::string("extended sockets speak ") + (ipv6 ? "IPv6" : "IPv4") + ": " +
               WhyVersion(name, found);
    });
}

Finding LocalhostFinding() {
    const LookUp found = VelSockTools::FindAddresses("localhost");
    if (!found.addresses.empty()) return {"localhost", true, ListOf(found), ""};
    return {"localhost", false, "no resolver knows it",
            "add the line \"127.0.0.1 localhost\" to the hosts file"};
}

}  // namespace

Findings ExamineNames() {
    std::string name;
    const Finding asked = Try("name", [&] {
        name = VelNet::SocketAddress::GetLocalMachineName().c_str();
        return name;
    });
    if (!asked.works) return {asked, LocalhostFinding()};
    const LookUp found = VelSockTools::FindAddresses(name);
    return {NameFinding(name, found), VersionFinding(name, found), LocalhostFinding()};
}

}  // namespace VelSockResolve
