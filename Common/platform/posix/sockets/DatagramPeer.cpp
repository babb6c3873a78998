#include "sockets/DatagramPeer.h"

#include "errors/Errors.h"
#include "sockets/AuxiliarySockets.h"
#include "sockets/DatagramPorts.h"
#include "sockets/ErrorQueue.h"
#include "sockets/MergedQueue.h"

#include <sys/socket.h>

#include <cerrno>

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
    const std::uint16_t port = PortOf(former);
    const bool anyAddress = IsWildcard(local);
    if (PortOf(local) != port) return BindTo(socket, anyAddress ? WithPort(local, port) : former);
    return anyAddress || KeepLink(socket, former, local);
}

void NotePort(const Socket& socket) {
    KernelAddress local = {};
    const bool has = LocalAddress(socket, local) && PortOf(local) != 0;
    socket.entry->Change(Flag::Bound, has);
}

// A Winsock error or 0, as of all below.
int TakePeerAway(const Socket& socket) {
    KernelAddress former = {};
    if (!LocalAddress(socket, former) || !ConnectToNobody(socket)) return WinsockFromErrno(errno);
    socket.entry->Clear(Flag::Connected | Flag::Strangers);
    if (KeepBinding(socket, former)) return FollowPeer(socket, nullptr);
    const int error = WinsockFromErrno(errno);
    NotePort(socket);
    return error;
}

// The kernel would try again later when there is no port, and finds no fault with the address when
// the way to it does not begin where the socket is bound.
int ConnectError(int error) {
    if (error == EAGAIN) return WinsockError::AddressInUse;
    return error == EINVAL ? WinsockError::AddressNotAvailable : WinsockFromErrno(error);
}

// The port that the kernel has given the socket nevertheless stays.
int FailureToConnect(const Socket& socket) {
    const int error = ConnectError(errno);
    if (!socket.Has(Flag::Bound)) NotePort(socket);
    return error;
}

// Where the socket is known already, there may be strangers.
void MarkConnected(const Socket& socket) {
    const bool known = socket.Has(Flag::Bound);
    socket.entry->Set(Flag::Connected | Flag::Bound | (known ? Flag::Strangers : 0U));
    if (known) DiscardStrangers(socket);
}

// The kernel's connect gives the socket a port of its own choice, which might be one that others
// share.
bool CanConnect(const Socket& socket) {
    return !socket.Has(Flag::Reuse) || HavePort(socket);
}

int FindWay(const Socket& socket, const KernelAddress& peer) {
    if (!CanConnect(socket)) return WinsockFromErrno(errno);
    if (!ConnectTo(socket, peer)) return FailureToConnect(socket);
    const int error = FollowPeer(socket, &peer);
    if (error != 0) TakePeerAway(socket);
    return error;
}

// The kernel keeps the way to the former peer, unless that is taken away first.
int ReplacePeer(const Socket& socket, const KernelAddress& peer) {
    int error = socket.Has(Flag::Connected) ? TakePeerAway(socket) : 0;
    if (error == 0) error = FindWay(socket, peer);
    if (error == 0) MarkConnected(socket);
    return error;
}

int ChangePeer(const Socket& socket, const KernelAddress& peer) {
    const bool anywhere = IsWildcard(peer);
    const bool anyPort = PortOf(peer) == 0;
    if (anywhere && anyPort) return TakePeerAway(socket);
    // The kernel would take the one for this machine, and the other for a peer.
    if (anywhere || anyPort) return WinsockError::AddressNotAvailable;
    return ReplacePeer(socket, peer);
}

}  // namespace

int ConnectDatagram(const Socket& socket, const KernelAddress& peer) {
    const int error = ChangePeer(socket, peer);
    return error == 0 ? Succeed() : Fail(error);
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
