#include "DatagramScene.h"

namespace Conformance {

namespace {

const char* Bytes(const void* request) {
    return static_cast<const char*>(request);
}

}  // namespace

int SetMembership(const OwnedSocket& socket, int option, const Winsock::MembershipIpv4& request,
                  int length) {
    return Winsock::setsockopt(socket.Get(), Winsock::LevelIpv4, option, Bytes(&request), length);
}

int SetMembership(const OwnedSocket& socket, int option, const Winsock::MembershipIpv6& request,
                  int length) {
    return Winsock::setsockopt(socket.Get(), Winsock::LevelIpv6, option, Bytes(&request), length);
}

Winsock::AddressIpv6 LocalIpv6Address(const OwnedSocket& socket) {
    Winsock::AddressIpv6 address = {};
    int length = sizeof address;
    EXPECT_EQ(Winsock::getsockname(socket.Get(), &address, &length), 0);
    return address;
}

OwnedSocket NewBoundIpv6Datagram() {
    OwnedSocket socket = NewDatagram(Winsock::FamilyIpv6);
    EXPECT_EQ(Bind(socket, LoopbackIpv6(0)), 0);
    return socket;
}

OwnedSocket NewReceiver() {
    OwnedSocket socket = NewBoundDatagram();
    EXPECT_EQ(SetOption(socket, Winsock::OptionReceiveTimeout, 20'000), 0);
    return socket;
}

}  // namespace Conformance
