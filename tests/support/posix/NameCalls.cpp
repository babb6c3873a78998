// The C library's functions for names, interfaces and the environment, as SystemCalls.cpp has the
// others, and compiled like that.
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <resolv.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>

#include "support/posix/Interception.h"

using SystemCalls::Intercept;
using SystemCalls::SystemCall;

int gethostname(char* name, size_t room) noexcept {
    return Intercept<"gethostname", decltype(::gethostname)>(SystemCall::Gethostname, name, room);
}

int getaddrinfo(const char* host, const char* service, const addrinfo* hints, addrinfo** list) {
    return Intercept<"getaddrinfo", decltype(::getaddrinfo)>(SystemCall::Getaddrinfo, host, service,
                                                             hints, list);
}

int getnameinfo(const sockaddr* address, socklen_t length, char* host, socklen_t hostRoom,
                char* service, socklen_t serviceRoom, int flags) {
    return Intercept<"getnameinfo", decltype(::getnameinfo)>(
        SystemCall::Getnameinfo, address, length, host, hostRoom, service, serviceRoom, flags);
}

int gethostbyname2_r(const char* name, int family, hostent* entry, char* room, size_t roomLength,
                     hostent** found, int* error) {
    return Intercept<"gethostbyname2_r", decltype(::gethostbyname2_r)>(
        SystemCall::Gethostbyname, name, family, entry, room, roomLength, found, error);
}

int gethostbyaddr_r(const void* address, socklen_t length, int family, hostent* entry, char* room,
                    size_t roomLength, hostent** found, int* error) {
    return Intercept<"gethostbyaddr_r", decltype(::gethostbyaddr_r)>(
        SystemCall::Gethostbyaddr, address, length, family, entry, room, roomLength, found, error);
}

int getifaddrs(ifaddrs** list) noexcept {
    return Intercept<"getifaddrs", decltype(::getifaddrs)>(SystemCall::Getifaddrs, list);
}

struct if_nameindex* if_nameindex() noexcept {
    return Intercept<"if_nameindex", decltype(::if_nameindex)>(SystemCall::IfNameindex);
}

int getsourcefilter(int descriptor, uint32_t interface, const sockaddr* group, socklen_t length,
                    uint32_t* mode, uint32_t* count, sockaddr_storage* sources) noexcept {
    return Intercept<"getsourcefilter", decltype(::getsourcefilter)>(
        SystemCall::Getsourcefilter, descriptor, interface, group, length, mode, count, sources);
}

// <resolv.h> calls it res_ninit.
int __res_ninit(res_state state) noexcept {
    return Intercept<"__res_ninit", decltype(::__res_ninit)>(SystemCall::ResNinit, state);
}

int res_nquerydomain(res_state state, const char* name, const char* domain, int kind, int type,
                     unsigned char* answer, int room) noexcept {
    return Intercept<"res_nquerydomain", decltype(::res_nquerydomain)>(
        SystemCall::ResNquerydomain, state, name, domain, kind, type, answer, room);
}

char* getenv(const char* name) noexcept {
    return Intercept<"getenv", decltype(::getenv)>(SystemCall::Getenv, name);
}

char* secure_getenv(const char* name) noexcept {
    return Intercept<"secure_getenv", decltype(::secure_getenv)>(SystemCall::Getenv, name);
}

// What fortified code calls.
extern "C" int __gethostname_chk(char* name, size_t length, size_t room) noexcept {
    return Intercept<"__gethostname_chk", decltype(__gethostname_chk)>(SystemCall::Gethostname,
                                                                       name, length, room);
}
