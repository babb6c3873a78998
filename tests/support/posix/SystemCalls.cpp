// The C library's functions as the library under test finds them: they stand in the test program,
// which the linker searches before any library. With -D_FORTIFY_SOURCE the compiler calls some by
// other names, which stand at the end. This file is compiled without it, since it turns the
// functions' own names into inline ones.
#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>

#include "support/posix/Interception.h"

using SystemCalls::Intercept;
using SystemCalls::SystemCall;

namespace {

// No call of the system has more arguments. The address sanitizer is not to look on: where there
// are fewer, whatever stands in their place is passed on, which the system does not look at.
struct SixArguments {
    [[gnu::no_sanitize_address]] explicit SixArguments(va_list& rest) {
        for (long& value : values)
            value = va_arg(rest, long);
    }

    long values[6];
};

}  // namespace

// Sockets

int socket(int family, int type, int protocol) noexcept {
    return Intercept<"socket", decltype(::socket)>(SystemCall::Socket, family, type, protocol);
}

int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
    return Intercept<"bind", decltype(::bind)>(SystemCall::Bind, descriptor, address, length);
}

int connect(int descriptor, const sockaddr* address, socklen_t length) {
    return Intercept<"connect", decltype(::connect)>(SystemCall::Connect, descriptor, address,
                                                     length);
}

int listen(int descriptor, int backlog) noexcept {
    return Intercept<"listen", decltype(::listen)>(SystemCall::Listen, descriptor, backlog);
}

int accept4(int descriptor, sockaddr* address, socklen_t* length, int flags) {
    return Intercept<"accept4", decltype(::accept4)>(SystemCall::Accept4, descriptor, address,
                                                     length, flags);
}

int shutdown(int descriptor, int how) noexcept {
    return Intercept<"shutdown", decltype(::shutdown)>(SystemCall::Shutdown, descriptor, how);
}

int getsockname(int descriptor, sockaddr* address, socklen_t* length) noexcept {
    return Intercept<"getsockname", decltype(::getsockname)>(SystemCall::Getsockname, descriptor,
                                                             address, length);
}

int getpeername(int descriptor, sockaddr* address, socklen_t* length) noexcept {
    return Intercept<"getpeername", decltype(::getpeername)>(SystemCall::Getpeername, descriptor,
                                                             address, length);
}

int getsockopt(int descriptor, int level, int option, void* value, socklen_t* length) noexcept {
    return Intercept<"getsockopt", decltype(::getsockopt)>(SystemCall::Getsockopt, descriptor,
                                                           level, option, value, length);
}

int setsockopt(int descriptor, int level, int option, const void* value,
               socklen_t length) noexcept {
    return Intercept<"setsockopt", decltype(::setsockopt)>(SystemCall::Setsockopt, descriptor,
                                                           level, option, value, length);
}

int poll(pollfd* waits, nfds_t count, int time) {
    return Intercept<"poll", decltype(::poll)>(SystemCall::Poll, waits, count, time);
}

int ppoll(pollfd* waits, nfds_t count, const timespec* time, const sigset_t* mask) {
    return Intercept<"ppoll", decltype(::ppoll)>(SystemCall::Ppoll, waits, count, time, mask);
}

int epoll_create1(int flags) noexcept {
    return Intercept<"epoll_create1", decltype(::epoll_create1)>(SystemCall::EpollCreate1, flags);
}

int epoll_ctl(int set, int operation, int descriptor, epoll_event* event) noexcept {
    return Intercept<"epoll_ctl", decltype(::epoll_ctl)>(SystemCall::EpollCtl, set, operation,
                                                         descriptor, event);
}

int epoll_wait(int set, epoll_event* events, int room, int time) {
    return Intercept<"epoll_wait", decltype(::epoll_wait)>(SystemCall::EpollWait, set, events, room,
                                                           time);
}

// Transfers

ssize_t send(int descriptor, const void* bytes, size_t count, int flags) {
    return Intercept<"send", decltype(::send)>(SystemCall::Send, descriptor, bytes, count, flags);
}

ssize_t sendto(int descriptor, const void* bytes, size_t count, int flags, const sockaddr* address,
               socklen_t length) {
    return Intercept<"sendto", decltype(::sendto)>(SystemCall::Sendto, descriptor, bytes, count,
                                                   flags, address, length);
}

ssize_t sendmsg(int descriptor, const msghdr* message, int flags) {
    return Intercept<"sendmsg", decltype(::sendmsg)>(SystemCall::Sendmsg, descriptor, message,
                                                     flags);
}

ssize_t recv(int descriptor, void* bytes, size_t room, int flags) {
    return Intercept<"recv", decltype(::recv)>(SystemCall::Recv, descriptor, bytes, room, flags);
}

ssize_t recvfrom(int descriptor, void* bytes, size_t room, int flags, sockaddr* address,
                 socklen_t* length) {
    return Intercept<"recvfrom", decltype(::recvfrom)>(SystemCall::Recvfrom, descriptor, bytes,
                                                       room, flags, address, length);
}

ssize_t recvmsg(int descriptor, msghdr* message, int flags) {
    return Intercept<"recvmsg", decltype(::recvmsg)>(SystemCall::Recvmsg, descriptor, message,
                                                     flags);
}

ssize_t read(int descriptor, void* bytes, size_t room) {
    return Intercept<"read", decltype(::read)>(SystemCall::Read, descriptor, bytes, room);
}

ssize_t write(int descriptor, const void* bytes, size_t count) {
    return Intercept<"write", decltype(::write)>(SystemCall::Write, descriptor, bytes, count);
}

// Descriptors and files

int close(int descriptor) {
    return Intercept<"close", decltype(::close)>(SystemCall::Close, descriptor);
}

int fstat(int descriptor, struct stat* status) noexcept {
    return Intercept<"fstat", decltype(::fstat)>(SystemCall::Fstat, descriptor, status);
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
    return Intercept<"fstatat", decltype(::fstatat)>(SystemCall::Fstatat, folder, path, status,
                                                     flags);
}

int fstatfs(int descriptor, struct statfs* status) noexcept {
    return Intercept<"fstatfs", decltype(::fstatfs)>(SystemCall::Fstatfs, descriptor, status);
}

ssize_t readlinkat(int folder, const char* path, char* text, size_t room) noexcept {
    return Intercept<"readlinkat", decltype(::readlinkat)>(SystemCall::Readlinkat, folder, path,
                                                           text, room);
}

DIR* fdopendir(int descriptor) {
    return Intercept<"fdopendir", decltype(::fdopendir)>(SystemCall::Fdopendir, descriptor);
}

std::FILE* fopen(const char* path, const char* mode) {
    return Intercept<"fopen", decltype(::fopen)>(SystemCall::Fopen, path, mode);
}

dirent* readdir(DIR* folder) {
    return Intercept<"readdir", decltype(::readdir)>(SystemCall::Readdir, folder);
}

// Functions that take one more argument or none.

int fcntl(int descriptor, int command, ...) {
    va_list rest;
    va_start(rest, command);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return Intercept<"fcntl", decltype(::fcntl)>(SystemCall::Fcntl, descriptor, command, argument);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list rest;
    va_start(rest, request);
    void* const argument = va_arg(rest, void*);
    va_end(rest);
    return Intercept<"ioctl", decltype(::ioctl)>(SystemCall::Ioctl, descriptor, request, argument);
}

int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Intercept<"open", decltype(::open)>(SystemCall::Open, path, flags, mode);
}

int openat(int folder, const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const mode_t mode = va_arg(rest, mode_t);
    va_end(rest);
    return Intercept<"openat", decltype(::openat)>(SystemCall::Openat, folder, path, flags, mode);
}

long syscall(long number, ...) noexcept {
    va_list rest;
    va_start(rest, number);
    const SixArguments six(rest);
    va_end(rest);
    const auto& [first, second, third, fourth, fifth, sixth] = six.values;
    return Intercept<"syscall", decltype(::syscall)>(SystemCall::Syscall, number, first, second,
                                                     third, fourth, fifth, sixth);
}

// Signals

int sigtimedwait(const sigset_t* signals, siginfo_t* which, const timespec* time) {
    return Intercept<"sigtimedwait", decltype(::sigtimedwait)>(SystemCall::Sigtimedwait, signals,
                                                               which, time);
}

// The names that fortified code calls, which abort if more is asked for than the buffer holds. Its
// size comes after the usual arguments, but before flags and addresses.
extern "C" {

ssize_t __recv_chk(int descriptor, void* bytes, size_t count, size_t room, int flags) {
    return Intercept<"__recv_chk", decltype(__recv_chk)>(SystemCall::Recv, descriptor, bytes, count,
                                                         room, flags);
}

ssize_t __recvfrom_chk(int descriptor, void* bytes, size_t count, size_t room, int flags,
                       sockaddr* address, socklen_t* length) {
    return Intercept<"__recvfrom_chk", decltype(__recvfrom_chk)>(
        SystemCall::Recvfrom, descriptor, bytes, count, room, flags, address, length);
}

ssize_t __read_chk(int descriptor, void* bytes, size_t count, size_t room) {
    return Intercept<"__read_chk", decltype(__read_chk)>(SystemCall::Read, descriptor, bytes, count,
                                                         room);
}

int __ppoll_chk(pollfd* waits, nfds_t count, const timespec* time, const sigset_t* mask,
                size_t room) {
    return Intercept<"__ppoll_chk", decltype(__ppoll_chk)>(SystemCall::Ppoll, waits, count, time,
                                                           mask, room);
}

int __open_2(const char* path, int flags) {
    return Intercept<"__open_2", decltype(__open_2)>(SystemCall::Open, path, flags);
}

int __openat_2(int folder, const char* path, int flags) {
    return Intercept<"__openat_2", decltype(__openat_2)>(SystemCall::Openat, folder, path, flags);
}

}  // extern "C"
