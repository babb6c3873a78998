// Passes Winsock's calls on unchanged.

#include "Platform/Winsock.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <cstddef>

namespace {

// The system's generic address type.
const sockaddr* SystemAddress(const void* address) noexcept {
    return static_cast<const sockaddr*>(address);
}
sockaddr* SystemAddress(void* address) noexcept {
    return static_cast<sockaddr*>(address);
}

// The system's own entry, which has the same layout as ours.
Winsock::HostEntry* OwnEntry(hostent* entry) noexcept {
    return static_cast<Winsock::HostEntry*>(static_cast<void*>(entry));
}

// The same for the system's other structures.
const addrinfo* SystemList(const Winsock::AddressInfo* list) noexcept {
    return static_cast<const addrinfo*>(static_cast<const void*>(list));
}
addrinfo* SystemList(Winsock::AddressInfo* list) noexcept {
    return static_cast<addrinfo*>(static_cast<void*>(list));
}
addrinfo** SystemPlace(Winsock::AddressInfo** list) noexcept {
    return static_cast<addrinfo**>(static_cast<void*>(list));
}
fd_set* SystemSet(Winsock::HandleSet* set) noexcept {
    return static_cast<fd_set*>(static_cast<void*>(set));
}
// Some system headers lack the const: select does not change it.
timeval* SystemTime(const Winsock::TimeValue* time) noexcept {
    return static_cast<timeval*>(static_cast<void*>(const_cast<Winsock::TimeValue*>(time)));
}

static_assert(sizeof(Winsock::Handle) == sizeof(SOCKET));
static_assert(Winsock::InvalidSocket == INVALID_SOCKET && Winsock::SocketError == SOCKET_ERROR);
static_assert(Winsock::NoAddress == INADDR_NONE);
static_assert(Winsock::FamilyUnspecified == AF_UNSPEC);
static_assert(Winsock::FamilyIpv4 == AF_INET && Winsock::FamilyIpv6 == AF_INET6);
static_assert(Winsock::TypeStream == SOCK_STREAM && Winsock::TypeDatagram == SOCK_DGRAM);
static_assert(Winsock::ProtocolTcp == IPPROTO_TCP && Winsock::ProtocolUdp == IPPROTO_UDP);
static_assert(Winsock::LevelSocket == SOL_SOCKET && Winsock::OptionReuseAddress == SO_REUSEADDR);
static_assert(Winsock::LevelIpv4 == IPPROTO_IP && Winsock::LevelIpv6 == IPPROTO_IPV6);
static_assert(Winsock::OptionBroadcast == SO_BROADCAST);
static_assert(Winsock::OptionAddMembership == IP_ADD_MEMBERSHIP &&
              Winsock::OptionDropMembership == IP_DROP_MEMBERSHIP);
static_assert(Winsock::OptionAddMembership == IPV6_ADD_MEMBERSHIP &&
              Winsock::OptionDropMembership == IPV6_DROP_MEMBERSHIP);
static_assert(Winsock::NumericHost == NI_NUMERICHOST && Winsock::NumericService == NI_NUMERICSERV &&
              Winsock::DatagramService == NI_DGRAM);
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
static_assert(offsetof(Winsock::AddressIpv6, family) == offsetof(sockaddr_in6, sin6_family));
static_assert(offsetof(Winsock::AddressIpv6, port) == offsetof(sockaddr_in6, sin6_port));
static_assert(offsetof(Winsock::AddressIpv6, flowInformation) ==
              offsetof(sockaddr_in6, sin6_flowinfo));
static_assert(offsetof(Winsock::AddressIpv6, address) == offsetof(sockaddr_in6, sin6_addr));
static_assert(offsetof(Winsock::AddressIpv6, scope) == offsetof(sockaddr_in6, sin6_scope_id));
static_assert(sizeof(Winsock::AddressStorage) == sizeof(sockaddr_storage));
static_assert(offsetof(Winsock::AddressStorage, family) == offsetof(sockaddr_storage, ss_family));
static_assert(sizeof(Winsock::AddressInfo) == sizeof(addrinfo));
static_assert(offsetof(Winsock::AddressInfo, flags) == offsetof(addrinfo, ai_flags));
static_assert(offsetof(Winsock::AddressInfo, family) == offsetof(addrinfo, ai_family));
static_assert(offsetof(Winsock::AddressInfo, type) == offsetof(addrinfo, ai_socktype));
static_assert(offsetof(Winsock::AddressInfo, protocol) == offsetof(addrinfo, ai_protocol));
static_assert(offsetof(Winsock::AddressInfo, addressLength) == offsetof(addrinfo, ai_addrlen));
static_assert(offsetof(Winsock::AddressInfo, canonicalName) == offsetof(addrinfo, ai_canonname));
static_assert(offsetof(Winsock::AddressInfo, address) == offsetof(addrinfo, ai_addr));
static_assert(offsetof(Winsock::AddressInfo, next) == offsetof(addrinfo, ai_next));
static_assert(sizeof(Winsock::MembershipIpv4) == sizeof(ip_mreq));
static_assert(offsetof(Winsock::MembershipIpv4, group) == offsetof(ip_mreq, imr_multiaddr));
static_assert(offsetof(Winsock::MembershipIpv4, interfaceAddress) ==
              offsetof(ip_mreq, imr_interface));
static_assert(sizeof(Winsock::MembershipIpv6) == sizeof(ipv6_mreq));
static_assert(offsetof(Winsock::MembershipIpv6, group) == offsetof(ipv6_mreq, ipv6mr_multiaddr));
static_assert(offsetof(Winsock::MembershipIpv6, interfaceIndex) ==
              offsetof(ipv6_mreq, ipv6mr_interface));
static_assert(Winsock::HandleSet::Room == FD_SETSIZE);
static_assert(sizeof(Winsock::HandleSet) == sizeof(fd_set));
static_assert(offsetof(Winsock::HandleSet, count) == offsetof(fd_set, fd_count));
static_assert(offsetof(Winsock::HandleSet, handles) == offsetof(fd_set, fd_array));
static_assert(sizeof(Winsock::TimeValue) == sizeof(timeval));
static_assert(offsetof(Winsock::TimeValue, seconds) == offsetof(timeval, tv_sec));
static_assert(offsetof(Winsock::TimeValue, microseconds) == offsetof(timeval, tv_usec));
static_assert(sizeof(Winsock::HostEntry) == sizeof(hostent));
static_assert(offsetof(Winsock::HostEntry, name) == offsetof(hostent, h_name));
static_assert(offsetof(Winsock::HostEntry, aliases) == offsetof(hostent, h_aliases));
static_assert(offsetof(Winsock::HostEntry, addressType) == offsetof(hostent, h_addrtype));
static_assert(offsetof(Winsock::HostEntry, addressLength) == offsetof(hostent, h_length));
static_assert(offsetof(Winsock::HostEntry, addresses) == offsetof(hostent, h_addr_list));
static_assert(sizeof(Winsock::StartupData) == sizeof(WSADATA));
static_assert(offsetof(Winsock::StartupData, version) == offsetof(WSADATA, wVersion));
static_assert(offsetof(Winsock::StartupData, highestVersion) == offsetof(WSADATA, wHighVersion));
static_assert(offsetof(Winsock::StartupData, maximumSockets) == offsetof(WSADATA, iMaxSockets));
static_assert(offsetof(Winsock::StartupData, maximumDatagram) == offsetof(WSADATA, iMaxUdpDg));
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

int Winsock::sendto(Handle handle, const char* buffer, int length, int flags, const void* address,
                    int addressLength) {
    return ::sendto(handle, buffer, length, flags, SystemAddress(address), addressLength);
}

int Winsock::recvfrom(Handle handle, char* buffer, int length, int flags, void* address,
                      int* addressLength) {
    return ::recvfrom(handle, buffer, length, flags, SystemAddress(address), addressLength);
}

int Winsock::select(int ignored, HandleSet* read, HandleSet* write, HandleSet* except,
                    const TimeValue* timeout) {
    return ::select(ignored, SystemSet(read), SystemSet(write), SystemSet(except),
                    SystemTime(timeout));
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

int Winsock::getaddrinfo(const char* host, const char* service, const AddressInfo* hints,
                         AddressInfo** result) {
    return ::getaddrinfo(host, service, SystemList(hints), SystemPlace(result));
}

void Winsock::freeaddrinfo(AddressInfo* list) {
    ::freeaddrinfo(SystemList(list));
}

int Winsock::getnameinfo(const void* address, int addressLength, char* host, unsigned int hostRoom,
                         char* service, unsigned int serviceRoom, int flags) {
    return ::getnameinfo(SystemAddress(address), addressLength, host, hostRoom, service,
                         serviceRoom, flags);
}

unsigned int Winsock::inet_addr(const char* text) {
    return ::inet_addr(text);
}
