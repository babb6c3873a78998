#include "sockets/DatagramPeer.h"

#include <sys/socket.h>

#include <cerrno>

#include "errors/Errors.h"
#include "sockets/AuxiliarySockets.h"
#include "sockets/DatagramPorts.h"
#include "sockets/ErrorQueue.h"
#include "sockets/MergedQueue.h"

namespace Posix {

namespace {

// The sender of the datagram that is next; false with errno when there is none.
bool NextSender(const Socket& socket, KernelAddress& sender) {
    socklen_t length = sizeof sender;
    return ::recvfrom(FirstToRead(socket), nullptr, 0, MSG_PEEK | MSG_DONTWAIT, &sender.any,
                      &length) >= 0;
}

// The same past the network's reports, which the kernel tells of first and once.
bool NextSenderBehindReports(const Socket& socket, KernelAddress& sender) {
    while (!NextSender(socket, sender)) {
        if (!MayBeReport(errno)) return false;
        CollectTold(socket);
    }
    return true;
}

bool SameEndpoint(const KernelAddress& left, const KernelAddress& right) {
    return SameHost(left, right) && PortOf(left) == PortOf(right);
}

void DiscardNext(const Socket& socket) {
    ::recv(FirstToRead(socket), nullptr, 0, MSG_DONTWAIT);
}

// The kernel lets go of the link with the peer, even of the one that the own address needs.
bool KeepLink(const Socket& socket, const KernelAddress& former, const KernelAddress& local) {
    if (!socket.Has(Flag::Ipv6)) return true;
    const std::uint32_t link = former.ipv6.sin6_scope_id;
    if (link == local.ipv6.sin6_scope_id) return true;
    return ::setsockopt(socket.descriptor, SOL_SOCKET, SO_BINDTOIFINDEX, &link, sizeof link) == 0;
}

// The kernel lets go of the address and of the port, too, unless bind was given them.
bool KeepBinding(const Socket& socket, const KernelAddress& former) {
    KernelAddress local = {};
    if (!LocalAddress(socket, local)) return false;
    if (IsWildcard(local)) {
        const std::uint16_t port = PortOf(former);
        return PortOf(local) == port || BindTo(socket, WithPort(local, port));
    }
    return PortOf(local) == 0 ? BindTo(socket, former) : KeepLink(socket, former, local);
}

// False with errno when the kernel refuses; then the socket may have lost its port.
bool TakePeerAway(const Socket& socket) {
    KernelAddress former = {};
    KernelAddress nobody = {};
    nobody.any.sa_family = AF_UNSPEC;
    if (!LocalAddress(socket, former) || !ConnectTo(socket, nobody)) return false;
    socket.entry->Clear(Flag::Connected | Flag::Strangers);
    if (KeepBinding(socket, former)) return FollowPeer(socket, nullptr) == 0;
    socket.entry->Clear(Flag::Bound);
    return false;
}

// What the kernel refuses to connect may have got its port nevertheless.
void NotePort(const Socket& socket) {
    KernelAddress local = {};
    if (LocalAddress(socket, local) && PortOf(local) != 0) socket.entry->Set(Flag::Bound);
}

// The kernel would try again later when there is no port, and finds no fault with the address when
// the way to it does not begin where the socket is bound.
int ConnectError(int error) {
    if (error == EAGAIN) return WinsockError::AddressInUse;
    return error == EINVAL ? WinsockError::AddressNotAvailable : WinsockFromErrno(error);
}

int FailToConnect(const Socket& socket) {
    const int error = ConnectError(errno);
    NotePort(socket);
    return Fail(error);
}

// Where the socket is known already, there may be strangers.
void MarkConnected(const Socket& socket) {
    const bool known = socket.Has(Flag::Bound);
    socket.entry->Set(Flag::Connected | Flag::Bound | (known ? Flag::Strangers : 0U));
    if (known) DiscardStrangers(socket);
}

// The kernel keeps the way to the former peer, unless that is taken away first.
int ReplacePeer(const Socket& socket, const KernelAddress& peer) {
    if (socket.Has(Flag::Connected) && !TakePeerAway(socket)) return FailFromErrno();
    // A port that the kernel's connect chooses might be one that others share.
    if (socket.Has(Flag::Reuse) && !HavePort(socket)) return FailFromErrno();
    if (!ConnectTo(socket, peer)) return FailToConnect(socket);
    const int error = FollowPeer(socket, &peer);
    MarkConnected(socket);
    return error == 0 ? Succeed() : Fail(error);
}

}  // namespace

int ConnectDatagram(const Socket& socket, const KernelAddress& peer) {
    const bool anywhere = IsWildcard(peer);
    const bool anyPort = PortOf(peer) == 0;
    if (!anywhere && !anyPort) return ReplacePeer(socket, peer);
    // The kernel would take the one for this machine, and the other for a peer.
    if (anywhere != anyPort) return Fail(WinsockError::AddressNotAvailable);
    return TakePeerAway(socket) ? Succeed() : FailFromErrno();
}

void DiscardStrangers(const Socket& socket) {
    KernelAddress peer = {};
    KernelAddress sender = {};
    if (!PeerAddress(socket, peer)) return;
    while (NextSenderBehindReports(socket, sender)) {
        if (SameEndpoint(sender, peer)) return;
        DiscardNext(socket);
    }
    // Nobody but the peer is let in any more.
    if (errno == EAGAIN) socket.entry->Clear(Flag::Strangers);
}

}  // namespace Posix
