#include "transfer/Datagrams.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/DatagramLosses.h"
#include "sockets/DatagramPeer.h"
#include "sockets/DatagramPorts.h"
#include "sockets/ErrorQueue.h"
#include "sockets/MergedQueue.h"
#include "transfer/Transfer.h"
#include "transfer/TransferDeadline.h"

#include <sys/socket.h>
#include <sys/uio.h>

#include <cerrno>

namespace {

using namespace Posix;

// The longest UDP payload: 65535 bytes less the UDP header and, for IPv4, the IP header, which the
// packet's length includes there but not in IPv6.
int LongestDatagram(const Socket& socket) {
    return socket.Has(Flag::Ipv6) ? 65527 : 65507;
}

WinsockError DatagramError(const Socket& socket, const char* buffer, int length) {
    if (buffer == nullptr && length > 0) return WinsockError::Fault;
    return length > LongestDatagram(socket) ? WinsockError::MessageSize : WinsockError::None;
}

int FailDatagram(const Socket& socket) {
    const bool timedOut = errno == EAGAIN && !socket.Has(Flag::NonBlocking);
    return timedOut ? Fail(WinsockError::TimedOut) : FailFromErrno();
}

// Whether a send only failed with the pending ICMP error of an earlier datagram. Moves such errors
// from the error queue (MSG_ERRQUEUE) to the losses. ECONNREFUSED has no other cause on a datagram
// socket, so with that another thread may have emptied the queue.
bool MetReport(const Socket& socket) {
    return MayBeReport(errno) && (CollectReports(socket) || errno == ECONNREFUSED);
}

// A datagram for which the local send queue has no space counts as sent, like one that is lost
// later. The kernel reports ENOBUFS only because IP_RECVERR is set.
int FinishFailedSend(const Socket& socket, int length) {
    return errno == ENOBUFS ? Succeed(length) : FailDatagram(socket);
}

int SendToKernel(const Socket& socket, const char* buffer, int length, const KernelAddress* peer) {
    const socklen_t peerLength = FamilyOf(socket).addressLength;
    TransferDeadline deadline(socket, Sending);
    const auto attempt = [&](int attemptFlags) {
        return ::sendto(socket.descriptor, buffer, Size(length), MSG_NOSIGNAL | attemptFlags,
                        peer != nullptr ? &peer->any : nullptr, peer != nullptr ? peerLength : 0);
    };
    ssize_t sent = RepeatInterrupted(deadline, attempt);
    for (int count = 0; sent < 0 && count < MostReports && MetReport(socket); ++count)
        sent = RepeatInterrupted(deadline, attempt);
    return sent < 0 ? FinishFailedSend(socket, length) : Succeed(static_cast<int>(sent));
}

bool MayBroadcast(const Socket& socket) {
    int value = 0;
    socklen_t length = sizeof value;
    ::getsockopt(socket.descriptor, SOL_SOCKET, SO_BROADCAST, &value, &length);
    return value != 0;
}

// The kernel would treat the wildcard as the local host, and look for a route to a broadcast
// address before it checks whether the socket may broadcast.
WinsockError DestinationError(const Socket& socket, const KernelAddress& peer) {
    if (IsWildcard(peer)) return WinsockError::AddressNotAvailable;
    const bool everybody = !socket.Has(Flag::Ipv6) && peer.ipv4.sin_addr.s_addr == INADDR_BROADCAST;
    return everybody && !MayBroadcast(socket) ? WinsockError::Access : WinsockError::None;
}

WinsockError DestinationFromWinsock(const Socket& socket, const void* address, int length,
                                    KernelAddress& peer) {
    if (const auto error = KernelFromWinsock(socket, address, length, peer); IsError(error))
        return error;
    return DestinationError(socket, peer);
}

WinsockError ReceiveError(const Socket& socket, const char* buffer, int length, const void* address,
                          const int* addressLength) {
    if (!socket.Has(Flag::Bound)) return WinsockError::Invalid;
    // With an invalid buffer the kernel would drop a datagram.
    if (buffer == nullptr && length > 0) return WinsockError::Fault;
    const bool room = address == nullptr || HasRoomForAddress(socket, address, addressLength);
    return room ? WinsockError::None : WinsockError::Fault;
}

ssize_t ReceiveMessage(const Socket& socket, msghdr& message) {
    TransferDeadline deadline(socket, Receiving);
    return RepeatInterrupted(
        deadline, [&](int attemptFlags) { return ReceiveFirst(socket, message, attemptFlags); });
}

// Returns a negative number, with the last error set, if the call has failed.
ssize_t ReceiveFromKernel(const Socket& socket, msghdr& message) {
    if (const auto error = TakeLoss(socket); IsError(error)) return Fail(error);
    ssize_t received = ReceiveMessage(socket, message);
    while (received < 0) {
        if (!MayBeReport(errno)) return FailDatagram(socket);
        CollectTold(socket);
        if (const auto error = TakeLoss(socket); IsError(error)) return Fail(error);
        received = ReceiveMessage(socket, message);
    }
    return received;
}

}  // namespace

int Posix::SendDatagram(const Socket& socket, const char* buffer, int length,
                        const KernelAddress* peer) {
    if (const auto error = DatagramError(socket, buffer, length); IsError(error))
        return Fail(error);
    // The kernel refuses port 0; on Winsock it is a port where nobody listens.
    if (peer != nullptr && PortOf(*peer) == 0) return Succeed(length);
    return SendToKernel(socket, buffer, length, peer);
}

// NOLINTNEXTLINE(readability-non-const-parameter): the system writes to the buffer.
int Posix::ReceiveDatagram(const Socket& socket, char* buffer, int length, void* address,
                           int* addressLength) {
    if (const auto error = ReceiveError(socket, buffer, length, address, addressLength);
        IsError(error)) {
        return Fail(error);
    }
    KernelAddress sender = {};
    iovec room = {buffer, Size(length)};
    msghdr message = {};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &room;
    message.msg_iovlen = 1;
    const ssize_t received = ReceiveFromKernel(socket, message);
    if (received < 0) return Winsock::SocketError;
    if (socket.Has(Flag::Strangers)) DiscardStrangers(socket);
    if (address != nullptr) WinsockFromKernel(socket, sender, address, addressLength);
    if ((message.msg_flags & MSG_TRUNC) != 0) return Fail(WinsockError::MessageSize);
    return Succeed(static_cast<int>(received));
}

int Winsock::sendto(Handle handle, const char* buffer, int length, int flags, const void* address,
                    int addressLength) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    // A stream ignores the address and sends to its peer.
    if (address == nullptr || !socket.Has(Flag::Datagram)) {
        return send(handle, buffer, length, flags);
    }
    if (const auto error = TransferError(length, flags); IsError(error)) return Fail(error);
    KernelAddress peer = {};
    if (const auto error = DestinationFromWinsock(socket, address, addressLength, peer);
        IsError(error)) {
        return Fail(error);
    }
    if (!HavePort(socket)) return FailFromErrno();
    return UnlessClosed(socket, SendDatagram(socket, buffer, length, &peer));
}

int Winsock::recvfrom(Handle handle, char* buffer, int length, int flags, void* address,
                      int* addressLength) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (!socket.Has(Flag::Datagram)) return recv(handle, buffer, length, flags);
    if (const auto error = TransferError(length, flags); IsError(error)) return Fail(error);
    return UnlessClosed(socket, ReceiveDatagram(socket, buffer, length, address, addressLength));
}
