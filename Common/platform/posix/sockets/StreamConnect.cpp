#include "sockets/StreamConnect.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/TcpState.h"
#include "system/Descriptors.h"
#include "system/Waiting.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sched.h>
#include <sys/socket.h>

#include <cerrno>

namespace {

using namespace Posix;

// Winsock gives up on a silent peer after 21 seconds, the kernel after more than two minutes. Three
// retransmissions of the SYN (TCP_SYNCNT), the first after a second and each further one after
// twice the time, give 15 seconds; kernels that first send four more, one each second
// (tcp_syn_linear_timeouts), take 19. A smaller setting of the host is kept.
void LimitRepetitions(const Socket& socket) {
    constexpr int Most = 3;
    int repetitions = 0;
    socklen_t length = sizeof repetitions;
    ::getsockopt(socket.descriptor, IPPROTO_TCP, TCP_SYNCNT, &repetitions, &length);
    if (repetitions <= Most) return;
    ::setsockopt(socket.descriptor, IPPROTO_TCP, TCP_SYNCNT, &Most, sizeof Most);
}

// Returns the system's error number, 0 or EINPROGRESS included.
int ConnectOnce(const Socket& socket, const KernelAddress& peer) {
    return ConnectTo(socket, peer) ? 0 : errno;
}

// After a failed connect whose error was read from SO_ERROR, the next connect call only reports
// ECONNABORTED; the one after that connects.
int ConnectAnew(const Socket& socket, const KernelAddress& peer) {
    const int error = ConnectOnce(socket, peer);
    return error == ECONNABORTED ? ConnectOnce(socket, peer) : error;
}

// Returns the outcome of a connect call that the kernel continues: 0 if there is a peer, an error
// number, or EINPROGRESS, with errno set if the kernel does not tell.
int OutcomeOf(const Socket& socket) {
    const int state = TcpState(socket.descriptor);
    if (state < 0 || state == TCP_SYN_SENT || state == TCP_SYN_RECV) return EINPROGRESS;
    if (state != TCP_CLOSE) return 0;
    const int error = TakePendingError(socket.descriptor);
    // The kernel reports it once, and another caller may have read it.
    return error != 0 ? error : ECONNREFUSED;
}

// Waits for the outcome; EINPROGRESS with errno if the wait fails.
int AwaitOutcome(const Socket& socket) {
    const bool ready = WaitUntilReady(socket.descriptor, POLLOUT, WithoutLimit);
    return ready ? OutcomeOf(socket) : EINPROGRESS;
}

// Binds a stream without a peer to its former name again, or to another port if that one is taken.
// Returns whether it has a port then that it had lost.
bool HasPort(const Socket& socket, const KernelAddress& local) {
    if (BindTo(socket, local)) return true;
    return errno == EADDRINUSE && BindTo(socket, WithPort(local, 0));
}

// On Winsock a connect call binds the socket, which remains bound if the call fails. The kernel has
// then released a port that it chose itself, although getsockname still reports it, and drops an
// address that it chose only when connect is called with AF_UNSPEC.
void KeepName(const Socket& socket) {
    ConnectToNobody(socket);
    KernelAddress local = {};
    if (LocalAddress(socket, local) && HasPort(socket, local)) socket.entry->Set(Flag::Bound);
}

// Ends a connect call; returns whether a connection was established. ECONNRESET or EPIPE mean that
// it was established and has ended since.
bool Conclude(const Socket& socket, int error) {
    if (error == ECONNRESET) socket.entry->Set(Flag::Reset);
    if (error == EPIPE) socket.entry->Set(Flag::Aborted);
    const bool connected = error == 0 || error == ECONNRESET || error == EPIPE;
    connected ? MarkConnected(socket) : KeepName(socket);
    return connected;
}

void ConcludeUnfinished(const Socket& socket) {
    const int error = OutcomeOf(socket);
    if (error == EINPROGRESS || Conclude(socket, error)) return;
    socket.entry->Set(Flag::ConnectFailed);
    socket.entry->Clear(Flag::Connecting);
}

// Returns the local obstacle to reaching the peer, as the system's error number. Connecting a
// datagram socket sends nothing, but looks for a route and a local address.
int ObstacleHere(const Socket& socket, const KernelAddress& peer) {
    const Descriptor probe(::socket(peer.any.sa_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const socklen_t length = FamilyOf(socket).addressLength;
    return ::connect(probe.Number(), &peer.any, length) == 0 ? 0 : errno;
}

// Some kernel errors have several causes, for which Winsock has different numbers.
WinsockError ConnectError(const Socket& socket, const KernelAddress& peer, int error) {
    switch (error) {
        case EINVAL:  // the address lacks its scope, or cannot be reached from the local one
            return WinsockError::AddressNotAvailable;
        case EADDRNOTAVAIL:  // no local address for that route, or no port left
            if (ObstacleHere(socket, peer) != error) return WinsockError::AddressInUse;
            break;
        case EACCES:  // forbidden locally, or by a router
            if (ObstacleHere(socket, peer) != error) return WinsockError::HostUnreachable;
            break;
    }
    return WinsockFromErrno(error);
}

// The kernel continues to connect. Connecting keeps another connect call from reaching the kernel
// meanwhile.
int LeaveUnfinished(const Socket& socket, WinsockError error) {
    socket.entry->Set(Flag::Connecting | Flag::Bound);
    return Fail(error);
}

// EINTR after a signal; EINPROGRESS for a non-blocking socket, or once SO_SNDTIMEO has elapsed,
// which on Winsock does not limit connect.
bool IsUnfinished(int error) {
    return error == EINPROGRESS || error == EINTR;
}

int StartConnect(const Socket& socket, const KernelAddress& peer) {
    socket.entry->Clear(Flag::ConnectFailed);
    LimitRepetitions(socket);
    int error = ConnectAnew(socket, peer);
    if (IsUnfinished(error) && socket.Has(Flag::NonBlocking)) {
        return LeaveUnfinished(socket, WinsockError::WouldBlock);
    }
    if (IsUnfinished(error)) error = AwaitOutcome(socket);
    if (error == EINPROGRESS) return LeaveUnfinished(socket, WinsockFromErrno(errno));
    return Conclude(socket, error) ? Succeed() : Fail(ConnectError(socket, peer, error));
}

}  // namespace

int Posix::ConnectStream(const Socket& socket, const KernelAddress& peer) {
    if (socket.Has(Flag::Listening)) return Fail(WinsockError::Invalid);
    if (IsConnected(socket)) return Fail(WinsockError::IsConnected);
    // The kernel would treat the wildcard as the local host.
    if (IsWildcard(peer) || PortOf(peer) == 0) return Fail(WinsockError::AddressNotAvailable);
    if (socket.Has(Flag::Connecting)) return Fail(WinsockError::Already);
    return StartConnect(socket, peer);
}

// The kernel reports the reason of a failure once, so only one of several threads asks. The others
// spin until it is done, for the duration of a few system calls.
void Posix::NoticeOutcome(const Socket& socket) noexcept {
    const CancellationGuard whole;
    while ((socket.entry->Set(Flag::Concluding) & Flag::Concluding) != 0)
        ::sched_yield();
    if (socket.Has(Flag::Connecting)) ConcludeUnfinished(socket);
    socket.entry->Clear(Flag::Concluding);
}
