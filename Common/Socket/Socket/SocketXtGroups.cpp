// Broadcast and multicast of the extended socket.
#include "Socket/AddressList.h"
#include "Socket/SocketXtFailure.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SystemSocket.h"

#include <cstring>

namespace VelNet {

namespace {

constexpr int JoinGroup = 0;
constexpr int LeaveGroup = 1;

// Any other mode becomes no option, which the system refuses.
int MembershipOption(int mode) noexcept {
    switch (mode) {
        case JoinGroup:
            return Winsock::OptionAddMembership;
        case LeaveGroup:
            return Winsock::OptionDropMembership;
        default:
            return 0;
    }
}

bool HasGroups(const Winsock::AddressInfo& entry) noexcept {
    return entry.family == Winsock::FamilyIpv4 || entry.family == Winsock::FamilyIpv6;
}

// Returns the request for the group with the entry's address, on the default interface.
template <class Membership, class Address>
bool SetMembership(Winsock::Handle handle, const Winsock::AddressInfo& entry, int level,
                   int option) {
    Address address = {};
    std::memcpy(&address, entry.address, sizeof address);
    Membership membership = {};
    std::memcpy(membership.group, address.address, sizeof membership.group);
    char bytes[sizeof membership];
    std::memcpy(bytes, &membership, sizeof membership);
    return Winsock::setsockopt(handle, level, option, bytes, sizeof bytes) != Winsock::SocketError;
}

bool ChangeMembership(Winsock::Handle handle, const Winsock::AddressInfo& entry, int option) {
    return entry.family == Winsock::FamilyIpv4
               ? SetMembership<Winsock::MembershipIpv4, Winsock::AddressIpv4>(
                     handle, entry, Winsock::LevelIpv4, option)
               : SetMembership<Winsock::MembershipIpv6, Winsock::AddressIpv6>(
                     handle, entry, Winsock::LevelIpv6, option);
}

}  // namespace

void SocketXtImpl::SetSocketForBroadcast() {
    if (SetSocketOption(handle_, Winsock::OptionBroadcast, 1)) return;
    const int error = Winsock::WSAGetLastError();
    ThrowSocketXtError(
        {"VelNet::SocketXtImpl::SetSocketForBroadcast", "cannot set socket option for broadcast",
         "::setsockopt(SO_BROADCAST)", error},
        this);
}

void SocketXtImpl::SetSocketForMulticast(SpecialAddressKind group, int mode) {
    SocketXtImpl::SetSocketForMulticast(GetSpecialAddress(group, family_).c_str(), mode);
}

// Required (XtStartUp.OtherOperationsHaveNone,
// XtMulticast.EveryCallKeepsItsListOpenWhateverComesOfIt): unlike all other operations that
// resolve, does not start Winsock, and never frees the list of addresses.
void SocketXtImpl::SetSocketForMulticast(const char* group, int mode) {
    constexpr const char* function = "VelNet::SocketXtImpl::SetSocketForMulticast";
    constexpr const char* description = "cannot set option for multicast";
    const Winsock::AddressInfo hints = AddressHints(Winsock::TypeDatagram, 0);
    Winsock::AddressInfo* list = nullptr;
    if (Winsock::getaddrinfo(group, nullptr, &hints, &list) != 0) {
        const int error = Winsock::WSAGetLastError();
        ThrowSocketXtError({function, description, "::getaddrinfo", error}, this);
    }

    bool refused = false;
    for (const Winsock::AddressInfo* entry = list; entry != nullptr; entry = entry->next) {
        if (!HasGroups(*entry)) continue;
        refused = !ChangeMembership(handle_, *entry, MembershipOption(mode));
        if (!refused) return;
    }
    // Required (XtMulticast.AddressesOfOtherFamiliesAreSkippedAndNoFailure): nothing was tried.
    if (!refused) return;

    const int error = Winsock::WSAGetLastError();
    // Required (XtMulticast.FailureTextsAreToldWhole): the texts name IPv4's options for both
    // families, and every mode but joining counts as leaving.
    ThrowSocketXtError(
        {function, description,
         mode == JoinGroup ? "::setsockopt(IP_ADD_MEMBERSHIP)" : "::setsockopt(IP_DROP_MEMBERSHIP)",
         error},
        this);
}

}  // namespace VelNet
