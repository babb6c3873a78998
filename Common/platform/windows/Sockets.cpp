// Winsock's calls, handed on as they are.

// winsock2.h comes before everything that may include windows.h.
#include <winsock2.h>
// Behind it.
#include <ws2tcpip.h>

#include <Platform/Winsock.h>

#include <cstddef>

namespace {

// The system's address type, which stands for all of them.
const sockaddr* SystemAddress(const void* address) noexcept {
    return static_cast<const sockaddr*>(address);
}
sockaddr* SystemAddress(void* address) noexcept {
    return static_cast<sockaddr*>(address);
}

// The system's own entry, which has our layout.
Winsock::HostEntry* OwnEntry(hostent* entry) noexcept {
    return static_cast<Winsock::HostEntry*>(static_cast<void*>(entry));
}

static_assert(sizeof(Winsock::Handle) == sizeof(SOCKET));
static_assert(Winsock::InvalidSocket == INVALID_SOCKET && Winsock::SocketError == SOCKET_ERROR);
static_assert(Winsock::NoAddress == INADDR_NONE);
static_assert(Winsock::FamilyIpv4 == AF_INET && Winsock::FamilyIpv6 == AF_INET6);
static_assert(Winsock::TypeStream == SOCK_STREAM && Winsock::TypeDatagram == SOCK_DGRAM);
static_assert(Winsock::ProtocolTcp == IPPROTO_TCP && Winsock::ProtocolUdp == IPPROTO_UDP);
static_assert(Winsock::LevelSocket == SOL_SOCKET && Winsock::OptionReuseAddress == SO_REUSEADDR);
static_assert(Winsock::OptionSendTimeout == SO_SNDTIMEO &&
              Winsock::OptionReceiveTimeout == SO_RCVTIMEO);
static_assert(Winsock::CommandNonBlocking == static_cast<unsigned int>(FIONBIO));
static_assert(Winsock::CommandBytesAvailable == static_cast<unsigned int>(FIONREAD));
static_assert(Winsock::ErrorWouldBlock == WSAEWOULDBLOCK);
static_assert(sizeof(unsigned int) == sizeof(u_long));  // ioctlsocket's argument

static_assert(sizeof(Winsock::AddressIpv4) == sizeof(sockaddr_in));
static_assert(offsetof(Winsock::AddressIpv4, family) == offsetof(sockaddr_in, sin_family));
static_assert(offsetof(Winsock::AddressIpv4, port) == offsetof(sockaddr_in, sin_port));
static_assert(offsetof(Winsock::AddressIpv4, address) == offsetof(sockaddr_in, sin_addr));
static_assert(offsetof(Winsock::AddressIpv4, zero) == offsetof(sockaddr_in, sin_zero));
static_assert(sizeof(Winsock::AddressIpv6) == sizeof(sockaddr_in6));
static_assert(offsetof(Winsock::AddressIpv6, port) == offsetof(sockaddr_in6, sin6_port));
static_assert(offsetof(Winsock::AddressIpv6, flowInformation) ==
              offsetof(sockaddr_in6, sin6_flowinfo));
static_assert(offsetof(Winsock::AddressIpv6, address) == offsetof(sockaddr_in6, sin6_addr));
static_assert(offsetof(Winsock::AddressIpv6, scope) == offsetof(sockaddr_in6, sin6_scope_id));
static_assert(sizeof(Winsock::AddressStorage) == sizeof(sockaddr_storage));
static_assert(sizeof(Winsock::HostEntry) == sizeof(hostent));
static_assert(offsetof(Winsock::HostEntry, aliases) == offsetof(hostent, h_aliases));
static_assert(offsetof(Winsock::HostEntry, addressType) == offsetof(hostent, h_addrtype));
static_assert(offsetof(Winsock::HostEntry, addressLength) == offsetof(hostent, h_length));
static_assert(offsetof(Winsock::HostEntry, addresses) == offsetof(hostent, h_addr_list));
static_assert(sizeof(Winsock::StartupData) == sizeof(WSADATA));
static_assert(offsetof(Winsock::StartupData, highestVersion) == offsetof(WSADATA, wHighVersion));
static_assert(offsetof(Winsock::StartupData, maximumSockets) == offsetof(WSADATA, iMaxSockets));
static_assert(offsetof(Winsock::StartupData, vendorInformation) == offsetof(WSADATA, lpVendorInfo));
static_assert(offsetof(Winsock::StartupData, description) == offsetof(WSADATA, szDescription));
static_assert(offsetof(Winsock::StartupData, systemStatus) == offsetof(WSADATA, szSystemStatus));

}  // namespace

int Winsock::WSAStartup(unsigned short version, StartupData* data) {
    return ::WSAStartup(version, static_cast<WSADATA*>(static_cast<void*>(data)));
}

int Winsock::WSACleanup() {
    return ::WSACleanup();
}

int Winsock::WSAGetLastError() noexcept {
    return ::WSAGetLastError();
}

Winsock::Handle Winsock::socket(int family, int type, int protocol) {
    return ::socket(family, type, protocol);
}

int Winsock::closesocket(Handle handle) {
    return ::closesocket(handle);
}

int Winsock::bind(Handle handle, const void* address, int length) {
    return ::bind(handle, SystemAddress(address), length);
}

int Winsock::listen(Handle handle, int backlog) {
    return ::listen(handle, backlog);
}

int Winsock::connect(Handle handle, const void* address, int length) {
    return ::connect(handle, SystemAddress(address), length);
}

Winsock::Handle Winsock::accept(Handle handle, void* address, int* length) {
    return ::accept(handle, SystemAddress(address), length);
}

int Winsock::getsockname(Handle handle, void* address, int* length) {
    return ::getsockname(handle, SystemAddress(address), length);
}

int Winsock::getpeername(Handle handle, void* address, int* length) {
    return ::getpeername(handle, SystemAddress(address), length);
}

int Winsock::send(Handle handle, const char* buffer, int length, int flags) {
    return ::send(handle, buffer, length, flags);
}

int Winsock::recv(Handle handle, char* buffer, int length, int flags) {
    return ::recv(handle, buffer, length, flags);
}

int Winsock::setsockopt(Handle handle, int level, int option, const char* value, int length) {
    return ::setsockopt(handle, level, option, value, length);
}

int Winsock::ioctlsocket(Handle handle, unsigned int command, unsigned int* argument) {
    return ::ioctlsocket(handle, static_cast<long>(command),
                         static_cast<u_long*>(static_cast<void*>(argument)));
}

Winsock::HostEntry* Winsock::gethostbyname(const char* name) {
    return OwnEntry(::gethostbyname(name));
}

Winsock::HostEntry* Winsock::gethostbyaddr(const char* address, int length, int family) {
    return OwnEntry(::gethostbyaddr(address, length, family));
}

int Winsock::gethostname(char* name, int length) {
    return ::gethostname(name, length);
}

unsigned int Winsock::inet_addr(const char* text) {
    return ::inet_addr(text);
}
