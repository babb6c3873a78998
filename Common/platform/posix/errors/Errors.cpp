#include "errors/Errors.h"

#include <netdb.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace Posix {

constinit thread_local WinsockError lastError = WinsockError::None;

namespace {

struct ErrorPair {
    int system;
    WinsockError winsock;
};

// Where several of the system's numbers have the same Winsock number, the first one provides its
// description. A pair whose numbers do not mean quite the same has its reason beside it.
//
// Winsock's numbers without a pair: NotEnoughMemory and InsufficientBuffer, which are Windows' own;
// 10067, because no call here is refused for the number of processes; SystemNotReady,
// VersionNotSupported and NotStarted, because the system has no start-up; ServiceNotFound and
// HostNotFound to NoData, which come from the resolver's own numbers; and the other numbers from
// 10101 to 10112, of calls that the seam does not have. The system's numbers without a pair become
// Invalid.
constexpr ErrorPair Errors[] = {
    {EINTR, WinsockError::Interrupted},
    // For the description only: WinsockFromErrno gives NotSocket.
    {EBADF, WinsockError::BadFile},
    {ENOTSOCK, WinsockError::NotSocket},
    {EACCES, WinsockError::Access},
    // What a packet filter or a missing privilege refuses; Winsock has one number for both.
    {EPERM, WinsockError::Access},
    {EFAULT, WinsockError::Fault},
    {EINVAL, WinsockError::Invalid},
    {EMFILE, WinsockError::TooManyOpen},
    // The whole system's limit, which Winsock does not tell from the process's.
    {ENFILE, WinsockError::TooManyOpen},
    // Of a non-blocking call. In a blocking one it is a timeout, which the caller handles.
    {EAGAIN, WinsockError::WouldBlock},
    {EINPROGRESS, WinsockError::InProgress},
    {EALREADY, WinsockError::Already},
    {EDESTADDRREQ, WinsockError::DestinationRequired},
    {EMSGSIZE, WinsockError::MessageSize},
    {EPROTOTYPE, WinsockError::WrongProtocolType},
    {ENOPROTOOPT, WinsockError::NoProtocolOption},
    {EPROTONOSUPPORT, WinsockError::ProtocolNotSupported},
    {ESOCKTNOSUPPORT, WinsockError::SocketTypeNotSupported},
    {EOPNOTSUPP, WinsockError::OperationNotSupported},
    // The kernel was built without the call or the option.
    {ENOSYS, WinsockError::OperationNotSupported},
    {EPFNOSUPPORT, WinsockError::ProtocolFamilyNotSupported},
    {EAFNOSUPPORT, WinsockError::AddressFamilyNotSupported},
    {EADDRINUSE, WinsockError::AddressInUse},
    {EADDRNOTAVAIL, WinsockError::AddressNotAvailable},
    // An address or a group on an interface that is not there.
    {ENODEV, WinsockError::AddressNotAvailable},
    // The same, from other calls.
    {ENXIO, WinsockError::AddressNotAvailable},
    {ENETDOWN, WinsockError::NetworkDown},
    {ENETUNREACH, WinsockError::NetworkUnreachable},
    {ENETRESET, WinsockError::NetworkReset},
    {ECONNABORTED, WinsockError::ConnectionAborted},
    // The connection has ended before, or this side has shut down its half; StreamEnd finds out
    // which.
    {EPIPE, WinsockError::ConnectionAborted},
    {ECONNRESET, WinsockError::ConnectionReset},
    {ENOBUFS, WinsockError::NoBuffers},
    // The kernel is out of memory, which Winsock reports as a lack of buffers.
    {ENOMEM, WinsockError::NoBuffers},
    // The same of STREAMS resources.
    {ENOSR, WinsockError::NoBuffers},
    {EISCONN, WinsockError::IsConnected},
    {ENOTCONN, WinsockError::NotConnected},
    {ESHUTDOWN, WinsockError::ShutDown},
    {ETOOMANYREFS, WinsockError::TooManyReferences},
    {ETIMEDOUT, WinsockError::TimedOut},
    // A timer of the kernel, not of the connection.
    {ETIME, WinsockError::TimedOut},
    {ECONNREFUSED, WinsockError::ConnectionRefused},
    {ELOOP, WinsockError::Loop},
    {ENAMETOOLONG, WinsockError::NameTooLong},
    {EHOSTDOWN, WinsockError::HostDown},
    {EHOSTUNREACH, WinsockError::HostUnreachable},
    // From ICMP "source host isolated": a router does not forward what this host sends.
    {ENONET, WinsockError::HostUnreachable},
    {ENOTEMPTY, WinsockError::NotEmpty},
    {EUSERS, WinsockError::TooManyUsers},
    {EDQUOT, WinsockError::QuotaExceeded},
    {ESTALE, WinsockError::Stale},
    {EREMOTE, WinsockError::Remote},
};

// No system number may be listed twice, with two meanings.
consteval bool EachSystemErrorOnce() {
    for (const auto* pair = std::begin(Errors); pair != std::end(Errors); ++pair) {
        const auto same = [pair](const ErrorPair& other) { return other.system == pair->system; };
        if (std::any_of(std::next(pair), std::end(Errors), same)) return false;
    }
    return true;
}
static_assert(EachSystemErrorOnce());

}  // namespace

int Fail(WinsockError error) noexcept {
    lastError = error;
    return Winsock::SocketError;
}

int FailFromErrno() noexcept {
    return Fail(WinsockFromErrno(errno));
}

int ReturnError(WinsockError error) noexcept {
    lastError = error;
    return static_cast<int>(error);
}

WinsockError WinsockFromErrno(int error) noexcept {
    // To the caller, an invalid descriptor is a handle that is not a socket.
    if (error == EBADF) return WinsockError::NotSocket;
    const auto matches = [error](const ErrorPair& pair) { return pair.system == error; };
    const auto* found = std::find_if(std::begin(Errors), std::end(Errors), matches);
    return found != std::end(Errors) ? found->winsock : WinsockError::Invalid;
}

WinsockError WinsockFromResolver(int resolverError) noexcept {
    switch (resolverError) {
        case HOST_NOT_FOUND:
            return WinsockError::HostNotFound;
        case TRY_AGAIN:
            return WinsockError::TryAgain;
        case NO_DATA:
            return WinsockError::NoData;
        default:
            return WinsockError::NoRecovery;
    }
}

int ErrnoFromWinsock(WinsockError error) noexcept {
    const auto matches = [error](const ErrorPair& pair) { return pair.winsock == error; };
    const auto* found = std::find_if(std::begin(Errors), std::end(Errors), matches);
    return found != std::end(Errors) ? found->system : 0;
}

}  // namespace Posix

int Winsock::WSAGetLastError() noexcept {
    return static_cast<int>(Posix::lastError);
}
