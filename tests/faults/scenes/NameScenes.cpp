#include <VelNet/Address.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketInitialization.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelNet::SocketAddress;

std::string ListOf(const VelNet::OctetsCollection& list) {
    std::string text;
    for (unsigned int index = 0; index < list.GetCount(); ++index)
        text += Line(list.GetOctets(index).GetAddressString().c_str());
    return text;
}

std::string AddressesOfNames() {
    const VelNet::SocketInitialization layer;
    std::string text;
    for (const char* const name : {"localhost", "127.0.0.1"})
        text += ListOf(*SocketAddress::GetOctetsFromMachineName(name));
    return text;
}

std::string NamesOfAddresses() {
    const VelNet::SocketInitialization layer;
    return Line(SocketAddress::GetMachineNameFromOctets(Loopback()).c_str());
}

// The name server refuses.
std::string UnknownNames() {
    const VelNet::SocketInitialization layer;
    std::string text = OutcomeOf(VelNet::SOCKET_ERR_TRY_AGAIN, [] {
        SocketAddress::GetOctetsFromMachineName("no-such-host.invalid");
    });
    text += OutcomeOf(VelNet::SOCKET_ERR_TRY_AGAIN, [] {
        SocketAddress::GetMachineNameFromOctets(VelNet::Octets(203, 0, 113, 1));
    });
    return text + OutcomeOf(VelNet::SOCKET_ERR_UNKNOWN,
                            [] { SocketAddress::ConvertDottedStringToOctets("1.2.3"); });
}

std::string LocalNames() {
    const VelNet::SocketInitialization layer;
    std::string text = Line(SocketAddress::GetLocalMachineName().c_str());
    text += ListOf(*SocketAddress::GetOctetsFromMachineName(""));
    return text + Line(SocketAddress::ConvertDottedStringToOctets("10.0.0.1").GetAddress());
}

std::string Settings() {
    const VelNet::SocketInitialization layer;
    std::string text = Line(SocketAddress::GetLocalMachineDomain().c_str());
    text += Line(static_cast<int>(VelNet::SocketXt::GetIpVersion()));
    return text + ListOf(*SocketAddress::GetLocalMachineDomainNameServer());
}

std::string Cache() {
    const VelNet::SocketInitialization layer;
    const VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache(VelNet::CreateSocketAddressCache());
    if (!cache) throw std::bad_alloc();
    std::string text;
    for (int time = 0; time < 2; ++time) {
        text += Line(cache->GetOctetsFromMachineName("localhost").GetAddressString().c_str());
        text += Line(cache->GetMachineNameFromOctets(Loopback()).c_str());
    }
    return text;
}

std::string Addresses() {
    const VelNet::SocketInitialization layer;
    using VelNet::Address;
    const Address named("localhost", 80);
    const Address numbered(Loopback(), 80);
    std::string text = Line(named.GetIpAddress().c_str()) + Line(named.GetMachineName().c_str());
    text += Line(numbered.GetMachineName().c_str()) + Line(named == numbered);
    text += Line(Address(Address::THIS_MACHINE, 1).IsInitialized());
    Address copy(named);
    copy = Address(Address::LOOPBACK, 7);
    text += Line(copy != named) + Line(copy.GetPort());
    text += Line(copy.GetOctets().GetAddressString().c_str());
    return text + Line(Address().IsInitialized());
}

}  // namespace

std::vector<Scene> NameScenes() {
    return {{"addresses of names", AddressesOfNames},
            {"names of addresses", NamesOfAddresses},
            {"unknown names", UnknownNames},
            {"local names", LocalNames},
            {"settings", Settings},
            {"cache of names", Cache},
            {"addresses with names", Addresses}};
}

}  // namespace Faults
