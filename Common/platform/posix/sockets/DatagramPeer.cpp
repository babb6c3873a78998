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

// The sender of the next datagram; returns false with errno if there is none.
bool NextSender(const Socket& socket, KernelAddress& sender) {
    socklen_t length = sizeof sender;
    return ::recvfrom(FirstToRead(socket), nullptr, 0, MSG_PEEK | MSG_DONTWAIT, &sender.any,
                      &length) >= 0;
}

// The same after the network's reports, which the kernel returns first and once each.
bool NextSenderBehindReports(const Socket& socket, KernelAddress& sender) {
    for (int count = 0; !NextSender(socket, sender); ++count) {
        if (!MayBeReport(errno) || count == MostReports) return false;
        CollectTold(socket);
    }
    return true;
}

bool SameEndpoint(const KernelAddress& left, const KernelAddress& right) {
    return SameHost(left, right) && PortOf(left) == PortOf(right);
}

bool DiscardNext(const Socket& socket) {
    return ::recv(FirstToRead(socket), nullptr, 0, MSG_DONTWAIT) >= 0;
}

// Disconnecting, the kernel also unbinds the socket from its interface, as if the peer's link-local
// address had been the only reason for that. A local link-local address needs it again
// (SO_BINDTOIFINDEX).
bool KeepLink(const Socket& socket, const KernelAddress& former, const KernelAddress& local) {
    if (!socket.Has(Flag::Ipv6)) return true;
    const std::uint32_t link = former.ipv6.sin6_scope_id;
    if (link == local.ipv6.sin6_scope_id) return true;
    return ::setsockopt(socket.descriptor, SOL_SOCKET, SO_BINDTOIFINDEX, &link, sizeof link) == 0;
}

// Disconnecting, the kernel drops the local address and the port unless bind was given them.
bool KeepBinding(const Socket& socket, const KernelAddress& former) {
    KernelAddress local = {};
    if (!LocalAddress(socket, local)) return false;
    const std::uint16_t port = PortOf(former);
    const bool anyAddress = IsWildcard(local);
    if (PortOf(local) != port)
        return BindDatagramAgain(socket, anyAddress ? WithPort(local, port) : former);
    return anyAddress || KeepLink(socket, former, local);
}

void NotePort(const Socket& socket) {
    KernelAddress local = {};
    const bool has = LocalAddress(socket, local) && PortOf(local) != 0;
    socket.entry->Change(Flag::Bound, has);
}

// Returns a Winsock error or None, like all below.
WinsockError TakePeerAway(const Socket& socket) {
    KernelAddress former = {};
    if (!LocalAddress(socket, former) || !ConnectToNobody(socket)) return WinsockFromErrno(errno);
    socket.entry->Clear(Flag::Connected | Flag::Strangers);
    if (KeepBinding(socket, former)) return FollowPeer(socket, nullptr);
    const WinsockError error = WinsockFromErrno(errno);
    NotePort(socket);
    return error;
}

// The kernel reports a lack of ports as EAGAIN, and as EINVAL that the peer cannot be reached from
// the address that the socket is bound to.
WinsockError ConnectError(int error) {
    if (error == EAGAIN) return WinsockError::AddressInUse;
    return error == EINVAL ? WinsockError::AddressNotAvailable : WinsockFromErrno(error);
}

// The socket keeps a port that the kernel has given it nevertheless.
WinsockError FailureToConnect(const Socket& socket) {
    const WinsockError error = ConnectError(errno);
    if (!socket.Has(Flag::Bound)) NotePort(socket);
    return error;
}

// If the socket had a port already, its queue may hold datagrams of others.
void MarkConnected(const Socket& socket) {
    const bool known = socket.Has(Flag::Bound);
    socket.entry->Set(Flag::Connected | Flag::Bound | (known ? Flag::Strangers : 0U));
    if (known) DiscardStrangers(socket);
}

// The kernel's connect would choose a port, possibly one that others share.
bool CanConnect(const Socket& socket) {
    return !socket.Has(Flag::Reuse) || HavePort(socket);
}

WinsockError FindWay(const Socket& socket, const KernelAddress& peer) {
    if (!CanConnect(socket)) return WinsockFromErrno(errno);
    if (!ConnectTo(socket, peer)) return FailureToConnect(socket);
    const WinsockError error = FollowPeer(socket, &peer);
    if (IsError(error)) TakePeerAway(socket);
    return error;
}

// The kernel keeps the local address for the former peer unless the socket is disconnected first.
WinsockError ReplacePeer(const Socket& socket, const KernelAddress& peer) {
    WinsockError error = socket.Has(Flag::Connected) ? TakePeerAway(socket) : WinsockError::None;
    if (!IsError(error)) error = FindWay(socket, peer);
    if (!IsError(error)) MarkConnected(socket);
    return error;
}

WinsockError ChangePeer(const Socket& socket, const KernelAddress& peer) {
    const bool anywhere = IsWildcard(peer);
    const bool anyPort = PortOf(peer) == 0;
    if (anywhere && anyPort) return TakePeerAway(socket);
    // The kernel would connect to the local host for the wildcard, and accept port 0.
    if (anywhere || anyPort) return WinsockError::AddressNotAvailable;
    return ReplacePeer(socket, peer);
}

}  // namespace

int ConnectDatagram(const Socket& socket, const KernelAddress& peer) {
    const WinsockError error = ChangePeer(socket, peer);
    return IsError(error) ? Fail(error) : Succeed();
}

void DiscardStrangers(const Socket& socket) {
    KernelAddress peer = {};
    KernelAddress sender = {};
    int failures = 0;
    if (!PeerAddress(socket, peer)) return;
    while (NextSenderBehindReports(socket, sender)) {
        if (SameEndpoint(sender, peer)) return;
        if (!DiscardNext(socket) && ++failures > MostReports) return;
    }
    // The queue is empty, and the kernel now accepts datagrams from the peer only.
    if (errno == EAGAIN) socket.entry->Clear(Flag::Strangers);
}

}  // namespace Posix
