#include "NameCommands.h"

#include <VelNet/SocketAddress.h>

namespace Network {

namespace {

using VelNet::OctetsCollection;
using VelNet::SocketAddress;

Words ListOf(const OctetsCollection& collection) {
    Words list;
    for (unsigned int index = 0; index < collection.GetCount(); ++index) {
        list.emplace_back(collection.GetOctets(index).GetAddressString().c_str());
    }
    return list;
}

}  // namespace

Words Resolve(Host&, const Words& words) {
    return ListOf(*SocketAddress::GetOctetsFromMachineName(words[1].c_str()));
}

Words Reverse(Host&, const Words& words) {
    const VelNet::Octets address = SocketAddress::ConvertDottedStringToOctets(words[1].c_str());
    return {SocketAddress::GetMachineNameFromOctets(address).c_str()};
}

Words LocalName(Host&, const Words&) {
    return {SocketAddress::GetLocalMachineName().c_str()};
}

Words Domain(Host&, const Words&) {
    return {SocketAddress::GetLocalMachineDomain().c_str()};
}

Words NameServers(Host&, const Words&) {
    return ListOf(*SocketAddress::GetLocalMachineDomainNameServer());
}

Words TakeRecords(Host& host, const Words&) {
    Words list;
    for (const std::string& record : host.Records().Take()) {
        if (!list.empty()) list.emplace_back("|");
        list.push_back(record);
    }
    return list;
}

}  // namespace Network
