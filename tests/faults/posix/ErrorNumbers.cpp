#include "faults/posix/ErrorNumbers.h"

#include <netdb.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>

namespace Faults {

namespace {

using SystemCalls::SystemCall;

// From the sections "Errors" of the manual's pages, of sections 2, 3 and 7 (ip, ipv6, tcp, udp).
constexpr int Accept4[] = {
    EAGAIN,    EBADF,           ECONNABORTED,    EFAULT,     EINTR,       EINVAL,
    EMFILE,    ENFILE,          ENOBUFS,         ENOMEM,     ENOTSOCK,    EPERM,
    EPROTO,    ESOCKTNOSUPPORT, EPROTONOSUPPORT, ETIMEDOUT,  ENETDOWN,    ENOPROTOOPT,
    EHOSTDOWN, ENONET,          EHOSTUNREACH,    EOPNOTSUPP, ENETUNREACH, ENOSR};
constexpr int Bind[] = {EACCES, EADDRINUSE,   EBADF,  EINVAL, ENOTSOCK, EADDRNOTAVAIL, EFAULT,
                        ELOOP,  ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR,  EROFS};
constexpr int Close[] = {EBADF, EINTR, EIO, ENOSPC, EDQUOT};
constexpr int Connect[] = {EACCES,      EPERM,     EADDRINUSE,   EADDRNOTAVAIL, EAFNOSUPPORT,
                           EAGAIN,      EALREADY,  EBADF,        ECONNREFUSED,  EFAULT,
                           EINPROGRESS, EINTR,     EISCONN,      ENETUNREACH,   ENOTSOCK,
                           EPROTOTYPE,  ETIMEDOUT, EHOSTUNREACH, ECONNRESET,    ENOBUFS};
constexpr int EpollCreate1[] = {EINVAL, EMFILE, ENFILE, ENOMEM};
constexpr int EpollCtl[] = {EBADF, EEXIST, EINVAL, ELOOP, ENOENT, ENOMEM, ENOSPC, EPERM};
constexpr int EpollWait[] = {EBADF, EFAULT, EINTR, EINVAL};
constexpr int Fcntl[] = {EACCES, EAGAIN, EBADF,  EBUSY,   EFAULT, EINTR,
                         EINVAL, EMFILE, ENOLCK, ENOTDIR, EPERM,  EDEADLK};
constexpr int Fstat[] = {EACCES,       EBADF,  EFAULT, EINVAL,  ELOOP,
                         ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR, EOVERFLOW};
constexpr int Fdopendir[] = {EBADF, EMFILE, ENFILE, ENOMEM, ENOTDIR, EACCES, ENOENT};
constexpr int Fstatfs[] = {EBADF, EFAULT, EINTR, EIO, ENOMEM, ENOSYS, EOVERFLOW};
constexpr int Getaddrinfo[] = {EAI_ADDRFAMILY, EAI_AGAIN,    EAI_BADFLAGS, EAI_FAIL,
                               EAI_FAMILY,     EAI_MEMORY,   EAI_NODATA,   EAI_NONAME,
                               EAI_SERVICE,    EAI_SOCKTYPE, EMFILE,       ENOMEM};
constexpr int Gethostbyname[] = {HOST_NOT_FOUND, NO_DATA, NO_RECOVERY, TRY_AGAIN,
                                 ERANGE,         ENOMEM,  EMFILE};
constexpr int Gethostname[] = {EFAULT, EINVAL, ENAMETOOLONG, EPERM};
constexpr int Getifaddrs[] = {EAFNOSUPPORT, EMFILE, ENFILE, ENOBUFS, ENOMEM, EACCES, EPROTO};
constexpr int Getline[] = {EINVAL, ENOMEM, EAGAIN, EBADF, EINTR, EIO, EOVERFLOW};
constexpr int Getsockname[] = {EBADF, EFAULT, EINVAL, ENOBUFS, ENOTSOCK, ENOTCONN};
constexpr int Getsockopt[] = {EBADF,      EFAULT,        EINVAL,  ENOPROTOOPT, ENOTSOCK,
                              EADDRINUSE, EDOM,          EISCONN, ENOMEM,      ENOBUFS,
                              ENODEV,     EADDRNOTAVAIL, EPERM};
constexpr int Getsourcefilter[] = {EBADF, ENOTSOCK, EADDRNOTAVAIL, EINVAL, ENOMEM, ENODEV};
constexpr int IfNameindex[] = {ENOBUFS, ENOMEM, EMFILE, EACCES};
constexpr int Ioctl[] = {EBADF, EFAULT, EINVAL, ENOTTY, EAGAIN};
constexpr int Listen[] = {EADDRINUSE, EBADF, ENOTSOCK, EOPNOTSUPP, EINVAL};
constexpr int Lseek[] = {EBADF, EINVAL, ENXIO, EOVERFLOW, ESPIPE};
constexpr int Sleep[] = {EINTR, EFAULT, EINVAL, ENOTSUP};
constexpr int Open[] = {EACCES,    EBADF,  EBUSY,  EDQUOT,  EEXIST,  EFAULT,       EFBIG,
                        EINTR,     EINVAL, EISDIR, ELOOP,   EMFILE,  ENAMETOOLONG, ENFILE,
                        ENODEV,    ENOENT, ENOMEM, ENOSPC,  ENOTDIR, ENXIO,        EOPNOTSUPP,
                        EOVERFLOW, EPERM,  EROFS,  ETXTBSY, EAGAIN};
constexpr int Openat2[] = {EACCES,  EAGAIN, E2BIG, EINVAL, ELOOP,  EXDEV,  ENOENT,
                           ENOTDIR, ENOSYS, EPERM, EMFILE, ENFILE, ENOMEM, EINTR};
constexpr int Poll[] = {EFAULT, EINTR, EINVAL, ENOMEM};
constexpr int ThreadKey[] = {EAGAIN, ENOMEM, EINVAL};
constexpr int Read[] = {EAGAIN, EBADF,  EFAULT, EINTR,     EINVAL,
                        EIO,    EISDIR, ENXIO,  EOVERFLOW, ESPIPE};
constexpr int Readdir[] = {EBADF, EOVERFLOW, ENOMEM, EIO};
constexpr int Readlinkat[] = {EACCES, EBADF,        EFAULT, EINVAL, EIO,
                              ELOOP,  ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR};
constexpr int Recv[] = {EAGAIN,      EBADF,       ECONNREFUSED, EFAULT,     EINTR,     EINVAL,
                        ENOMEM,      ENOTCONN,    ENOTSOCK,     ECONNRESET, ETIMEDOUT, EHOSTUNREACH,
                        ENETUNREACH, ENOPROTOOPT, EPROTO,       EPIPE,      EMSGSIZE,  ENOBUFS};
constexpr int RegisterAtfork[] = {ENOMEM};
constexpr int Resolver[] = {ECONNREFUSED, ETIMEDOUT, EMSGSIZE, ENOMEM, EMFILE, ENETUNREACH};
constexpr int Limit[] = {EFAULT, EINVAL, EPERM};
constexpr int Send[] = {EACCES,       EAGAIN,  EALREADY,     EBADF,         ECONNRESET,
                        EDESTADDRREQ, EFAULT,  EINTR,        EINVAL,        EISCONN,
                        EMSGSIZE,     ENOBUFS, ENOMEM,       ENOTCONN,      ENOTSOCK,
                        EOPNOTSUPP,   EPIPE,   ETIMEDOUT,    EHOSTUNREACH,  ENETUNREACH,
                        ENETDOWN,     EPERM,   ECONNREFUSED, EADDRNOTAVAIL, EAFNOSUPPORT};
constexpr int Shutdown[] = {EBADF, EINVAL, ENOTCONN, ENOTSOCK};
constexpr int Sigtimedwait[] = {EAGAIN, EINTR, EINVAL};
constexpr int Socket[] = {EACCES, EAFNOSUPPORT, EINVAL,          EMFILE,
                          ENFILE, ENOBUFS,      EPROTONOSUPPORT, ENOMEM};
constexpr int Write[] = {EAGAIN, EBADF,  EDESTADDRREQ, EDQUOT, EFAULT, EFBIG,
                         EINTR,  EINVAL, EIO,          ENOSPC, EPERM,  EPIPE};

constexpr FailingFunction Table[] = {
    {"__openat_2", SystemCall::Openat, Open},
    {"__register_atfork", SystemCall::RegisterAtfork, RegisterAtfork},
    {"__res_ninit", SystemCall::ResNinit, Resolver},
    {"accept4", SystemCall::Accept4, Accept4},
    {"bind", SystemCall::Bind, Bind},
    {"clock_nanosleep", SystemCall::ClockNanosleep, Sleep},
    {"close", SystemCall::Close, Close},
    {"closedir", SystemCall::Closedir, Close},
    {"connect", SystemCall::Connect, Connect},
    {"epoll_create1", SystemCall::EpollCreate1, EpollCreate1},
    {"epoll_ctl", SystemCall::EpollCtl, EpollCtl},
    {"epoll_wait", SystemCall::EpollWait, EpollWait},
    {"fclose", SystemCall::Fclose, Close},
    {"fcntl", SystemCall::Fcntl, Fcntl},
    {"fdopendir", SystemCall::Fdopendir, Fdopendir},
    {"fopen", SystemCall::Fopen, Open},
    {"fstat", SystemCall::Fstat, Fstat},
    {"fstatfs", SystemCall::Fstatfs, Fstatfs},
    {"getaddrinfo", SystemCall::Getaddrinfo, Getaddrinfo},
    {"gethostbyaddr_r", SystemCall::Gethostbyaddr, Gethostbyname},
    {"gethostbyname2_r", SystemCall::Gethostbyname, Gethostbyname},
    {"gethostname", SystemCall::Gethostname, Gethostname},
    {"getifaddrs", SystemCall::Getifaddrs, Getifaddrs},
    {"getline", SystemCall::Getline, Getline},
    {"getpeername", SystemCall::Getpeername, Getsockname},
    {"getrlimit", SystemCall::Getrlimit, Limit},
    {"getsockname", SystemCall::Getsockname, Getsockname},
    {"getsockopt", SystemCall::Getsockopt, Getsockopt},
    {"getsourcefilter", SystemCall::Getsourcefilter, Getsourcefilter},
    {"if_nameindex", SystemCall::IfNameindex, IfNameindex},
    {"ioctl", SystemCall::Ioctl, Ioctl},
    {"listen", SystemCall::Listen, Listen},
    {"lseek", SystemCall::Lseek, Lseek},
    {"open", SystemCall::Open, Open},
    {"openat", SystemCall::Openat, Open},
    {"poll", SystemCall::Poll, Poll},
    {"ppoll", SystemCall::Ppoll, Poll},
    {"pread", SystemCall::Pread, Read},
    {"pthread_key_create", SystemCall::PthreadKeyCreate, ThreadKey},
    {"pthread_setspecific", SystemCall::PthreadSetspecific, ThreadKey},
    {"read", SystemCall::Read, Read},
    {"readdir", SystemCall::Readdir, Readdir},
    {"readlinkat", SystemCall::Readlinkat, Readlinkat},
    {"recv", SystemCall::Recv, Recv},
    {"recvfrom", SystemCall::Recvfrom, Recv},
    {"recvmsg", SystemCall::Recvmsg, Recv},
    {"res_nquerydomain", SystemCall::ResNquerydomain, Resolver},
    {"send", SystemCall::Send, Send},
    {"sendto", SystemCall::Sendto, Send},
    {"setsockopt", SystemCall::Setsockopt, Getsockopt},
    {"shutdown", SystemCall::Shutdown, Shutdown},
    {"sigtimedwait", SystemCall::Sigtimedwait, Sigtimedwait},
    {"socket", SystemCall::Socket, Socket},
    {"syscall", SystemCall::Syscall, Openat2},
    {"write", SystemCall::Write, Write},
};

}  // namespace

std::span<const FailingFunction> FailingFunctions() {
    return Table;
}

const FailingFunction& RowOf(SystemCalls::SystemCall which) {
    const auto* const row = std::find_if(std::begin(Table), std::end(Table),
                                         [=](const auto& entry) { return entry.which == which; });
    if (row == std::end(Table)) throw std::out_of_range("a call that is in no row");
    return *row;
}

const char* SymbolOf(SystemCalls::SystemCall which, int error) {
    if (error < 0) return ::gai_strerror(error);
    const bool resolver = which == SystemCall::Gethostbyname || which == SystemCall::Gethostbyaddr;
    if (resolver && error <= NO_DATA) return ::hstrerror(error);
    return ::strerrorname_np(error);
}

}  // namespace Faults
