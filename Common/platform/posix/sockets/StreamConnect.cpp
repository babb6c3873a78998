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

// Winsock gives up a silent peer after 21 seconds, the kernel after more than two minutes. With
// three repetitions, which come after a second and then after twice as long each time, these are
// 15 seconds; kernels that repeat the first few every second take 19. Where the host is set to even
// fewer, that counts.
void LimitRepetitions(const Socket& socket) {
    constexpr int Most = 3;
    int repetitions = 0;
    socklen_t length = sizeof repetitions;
    ::getsockopt(socket.descriptor, IPPROTO_TCP, TCP_SYNCNT, &repetitions, &length);
    if (repetitions <= Most) return;
    ::setsockopt(socket.descriptor, IPPROTO_TCP, TCP_SYNCNT, &Most, sizeof Most);
}

// The error number of the system, 0 or EINPROGRESS included.
int ConnectOnce(const Socket& socket, const KernelAddress& peer) {
    return ConnectTo(socket, peer) ? 0 : errno;
}

// A connect call after a failed one whose outcome was taken otherwise only reports that; the next
// one acts.
int ConnectAnew(const Socket& socket, const KernelAddress& peer) {
    const int error = ConnectOnce(socket, peer);
    return error == ECONNABORTED ? ConnectOnce(socket, peer) : error;
}

// What has become of a connect call with which the kernel goes on: 0 if there is a peer, why there
// is none, or EINPROGRESS, with errno if the kernel does not tell.
int OutcomeOf(const Socket& socket) {
    const int state = TcpState(socket.descriptor);
    if (state < 0 || state == TCP_SYN_SENT || state == TCP_SYN_RECV) return EINPROGRESS;
    if (state != TCP_CLOSE) return 0;
    const int error = TakePendingError(socket.descriptor);
    // The kernel tells it once, and may have told somebody else.
    return error != 0 ? error : ECONNREFUSED;
}

// The same later; EINPROGRESS with errno if the system cannot wait.
int AwaitOutcome(const Socket& socket) {
    const bool ready = WaitUntilReady(socket.descriptor, POLLOUT, WithoutLimit);
    return ready ? OutcomeOf(socket) : EINPROGRESS;
}

// Whether a stream without a peer has a port in the end. The kernel refuses to bind what is bound.
bool HasPort(const Socket& socket, const KernelAddress& local) {
    if (BindTo(socket, local) || errno == EINVAL) return true;
    return errno == EADDRINUSE && BindTo(socket, WithPort(local, 0));
}

// On Winsock a connect call binds the socket, and that stays so when it fails. The kernel then
// takes back a port that it has chosen itself, though it goes on telling its number, and forgets
// which address it has chosen only when it is told so.
void KeepName(const Socket& socket) {
    ConnectToNobody(socket);
    KernelAddress local = {};
    if (LocalAddress(socket, local) && HasPort(socket, local)) socket.entry->Set(Flag::Bound);
}

// Ends a connect call; returns whether it has led to a peer. What ends connections only tells that
// there was one meanwhile.
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

// What stands in the way to the peer on this machine already, as the system's error number: nothing
// is sent when a datagram socket connects, but the way is looked for, and the own address.
int ObstacleHere(const Socket& socket, const KernelAddress& peer) {
    const Descriptor probe(::socket(peer.any.sa_family, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const auto length = static_cast<socklen_t>(AddressLength(socket));
    return ::connect(probe.Number(), &peer.any, length) == 0 ? 0 : errno;
}

// Some of the kernel's numbers have reasons to which Winsock gives different ones.
int ConnectError(const Socket& socket, const KernelAddress& peer, int error) {
    switch (error) {
        case EINVAL:  // the address lacks its scope, or cannot be reached from the own one
            return WinsockError::AddressNotAvailable;
        case EADDRNOTAVAIL:  // no own address leads there, or there is no port left
            if (ObstacleHere(socket, peer) != error) return WinsockError::AddressInUse;
            break;
        case EACCES:  // forbidden here, or by a router
            if (ObstacleHere(socket, peer) != error) return WinsockError::HostUnreachable;
            break;
    }
    return WinsockFromErrno(error);
}

// The kernel goes on with the connect call; another one would be no continuation.
int LeaveUnfinished(const Socket& socket, int winsockError) {
    socket.entry->Set(Flag::Connecting | Flag::Bound);
    return Fail(winsockError);
}

// Interrupted, or cut short by the send time-out, which Winsock does not apply here.
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
    // The kernel would take the wildcard for this machine.
    if (IsWildcard(peer) || PortOf(peer) == 0) return Fail(WinsockError::AddressNotAvailable);
    if (socket.Has(Flag::Connecting)) return Fail(WinsockError::Already);
    return StartConnect(socket, peer);
}

// The kernel tells the reason of a failure once, so of several threads one asks. The others wait
// for what it finds, which takes it a few system calls.
void Posix::NoticeOutcome(const Socket& socket) noexcept {
    const CancellationGuard whole;
    while ((socket.entry->Set(Flag::Concluding) & Flag::Concluding) != 0)
        ::sched_yield();
    if (socket.Has(Flag::Connecting)) ConcludeUnfinished(socket);
    socket.entry->Clear(Flag::Concluding);
}
