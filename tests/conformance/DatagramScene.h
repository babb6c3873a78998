// What the scripts of datagrams share.
#pragma once

#include <cstring>
#include <string>

#include "Scene.h"

namespace Conformance {

template <typename Address>
int SendTo(const OwnedSocket& socket, const std::string& text, const Address& address,
           int addressLength = sizeof(Address)) {
    return Winsock::sendto(socket.Get(), text.data(), static_cast<int>(text.size()), 0, &address,
                           addressLength);
}

// What a receive call tells of a datagram and its sender.
template <typename Address>
struct Received {
    int result = 0;
    std::string buffer;
    Address sender = {};
    int length = sizeof(Winsock::AddressStorage);
};

template <typename Address = Winsock::AddressIpv4>
Received<Address> ReceiveFrom(const OwnedSocket& socket, int room = 100) {
    Received<Address> received;
    received.buffer.assign(static_cast<std::size_t>(room), '-');
    Winsock::AddressStorage storage = {};
    received.result = Winsock::recvfrom(socket.Get(), received.buffer.data(), room, 0, &storage,
                                        &received.length);
    std::memcpy(&received.sender, &storage, sizeof received.sender);
    return received;
}

Winsock::AddressIpv6 LocalIpv6Address(const OwnedSocket& socket);
OwnedSocket NewBoundIpv6Datagram();

// With a limit to its waiting: what never comes is a failed test, and not one that never ends.
OwnedSocket NewReceiver();

inline constexpr int Join = Winsock::OptionAddMembership;
inline constexpr int Leave = Winsock::OptionDropMembership;

// Makes the option's request, or only a part of it.
int SetMembership(const OwnedSocket& socket, int option, const Winsock::MembershipIpv4& request,
                  int length = sizeof(Winsock::MembershipIpv4));
int SetMembership(const OwnedSocket& socket, int option, const Winsock::MembershipIpv6& request,
                  int length = sizeof(Winsock::MembershipIpv6));

}  // namespace Conformance
