#include "transfer/Datagrams.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
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

// What a packet has room for behind its headers. IPv6 does not count its own header.
int LongestDatagram(const Socket& socket) {
    return socket.Has(Flag::Ipv6) ? 65527 : 65507;
}

int DatagramError(const Socket& socket, const char* buffer, int length) {
    if (buffer == nullptr && length > 0) return WinsockError::Fault;
    return length > LongestDatagram(socket) ? WinsockError::MessageSize : 0;
}

int FailDatagram(const Socket& socket) {
    const bool timedOut = errno == EAGAIN && !socket.Has(Flag::NonBlocking);
    return timedOut ? Fail(WinsockError::TimedOut) : FailFromErrno();
}

// Whether an attempt to send met the report of an earlier datagram, which is put aside. Nothing
// else refuses a datagram's connection, so that another thread may have put this one aside.
bool MetReport(const Socket& socket) {
    return MayBeReport(errno) && (CollectReports(socket) || errno == ECONNREFUSED);
}

// What the own machine has no more room for on its way out counts as sent, like what is lost later.
// The kernel tells of the one because it is asked to tell of the other.
int FinishFailedSend(const Socket& socket, int length) {
    return errno == ENOBUFS ? Succeed(length) : FailDatagram(socket);
}

// New reports may come in while others are put aside, so there is a limit to that.
int SendToKernel(const Socket& socket, const char* buffer, int length, const KernelAddress* peer) {
    constexpr int MostReports = 16;
    const auto peerLength = static_cast<socklen_t>(AddressLength(socket));
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

// The kernel would take no address for this machine, and look for a way to everybody before it asks
// whether the socket may go it.
int DestinationError(const Socket& socket, const KernelAddress& peer) {
    if (IsWildcard(peer)) return WinsockError::AddressNotAvailable;
    const bool everybody = !socket.Has(Flag::Ipv6) && peer.ipv4.sin_addr.s_addr == INADDR_BROADCAST;
    return everybody && !MayBroadcast(socket) ? WinsockError::Access : 0;
}

int DestinationFromWinsock(const Socket& socket, const void* address, int length,
                           KernelAddress& peer) {
    if (const int error = KernelFromWinsock(socket, address, length, peer)) return error;
    return DestinationError(socket, peer);
}

int ReceiveError(const Socket& socket, const char* buffer, int length, const void* address,
                 const int* addressLength) {
    if (!socket.Has(Flag::Bound)) return WinsockError::Invalid;
    // The kernel would lose a datagram to these.
    if (buffer == nullptr && length > 0) return WinsockError::Fault;
    const bool room = address == nullptr || HasRoomForAddress(socket, address, addressLength);
    return room ? 0 : WinsockError::Fault;
}

ssize_t ReceiveMessage(const Socket& socket, msghdr& message) {
    TransferDeadline deadline(socket, Receiving);
    return RepeatInterrupted(
        deadline, [&](int attemptFlags) { return ReceiveFirst(socket, message, attemptFlags); });
}

// Negative when the call has failed, with the thread's last error.
ssize_t ReceiveFromKernel(const Socket& socket, msghdr& message) {
    if (const int error = socket.entry->TakeLoss()) return Fail(error);
    ssize_t received = ReceiveMessage(socket, message);
    while (received < 0) {
        if (!MayBeReport(errno)) return FailDatagram(socket);
        CollectTold(socket);
        if (const int error = socket.entry->TakeLoss()) return Fail(error);
        received = ReceiveMessage(socket, message);
    }
    return received;
}

}  // namespace

int Posix::SendDatagram(const Socket& socket, const char* buffer, int length,
                        const KernelAddress* peer) {
    if (const int error = DatagramError(socket, buffer, length)) return Fail(error);
    // To the kernel port 0 is a mistake, to Winsock just one where nobody listens.
    if (peer != nullptr && PortOf(*peer) == 0) return Succeed(length);
    return SendToKernel(socket, buffer, length, peer);
}

// NOLINTNEXTLINE(readability-non-const-parameter): the system writes to the buffer.
int Posix::ReceiveDatagram(const Socket& socket, char* buffer, int length, void* address,
                           int* addressLength) {
    if (const int error = ReceiveError(socket, buffer, length, address, addressLength)) {
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
    // A stream has its peer, whatever the address.
    if (address == nullptr || !socket.Has(Flag::Datagram)) {
        return send(handle, buffer, length, flags);
    }
    if (const int error = TransferError(length, flags)) return Fail(error);
    KernelAddress peer = {};
    if (const int error = DestinationFromWinsock(socket, address, addressLength, peer)) {
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
    if (const int error = TransferError(length, flags)) return Fail(error);
    return UnlessClosed(socket, ReceiveDatagram(socket, buffer, length, address, addressLength));
}
