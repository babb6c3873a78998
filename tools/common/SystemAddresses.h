// What the systems' network functions have in common, for the sources of SystemNetwork.h: they
// include it after their system's headers, which declare what it uses under the same names.
#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "SystemNetwork.h"

namespace VelSockTools {

using AddressList = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;
using AddressLength = socklen_t;

inline std::optional<std::string> TextOf(const sockaddr* address, std::size_t length, int flags) {
    std::array<char, NI_MAXHOST> text = {};
    const int error = ::getnameinfo(address, static_cast<AddressLength>(length), text.data(),
                                    static_cast<unsigned int>(text.size()), nullptr, 0, flags);
    if (error != 0) return {};
    return text.data();
}

inline std::string NumericText(const sockaddr* address, std::size_t length) {
    return TextOf(address, length, NI_NUMERICHOST).value_or("");
}

inline HostAddress HostAddressOf(const addrinfo& entry) {
    using VelNet::SocketXt;
    return {entry.ai_family == AF_INET6 ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4,
            NumericText(entry.ai_addr, entry.ai_addrlen)};
}

// The system's error is that of its function, which ErrorOf makes one of the library's.
template <class ErrorOf>
LookUp FindAddressesBy(const std::string& host, const ErrorOf& errorOf) {
    addrinfo hints = {};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int error = ::getaddrinfo(host.c_str(), nullptr, &hints, &found);
    if (error != 0) return {{}, errorOf(error)};
    const AddressList list(found, &::freeaddrinfo);
    LookUp result = {{}, VelNet::SOCKET_ERR_NO_DATA};
    for (const addrinfo* entry = list.get(); entry != nullptr; entry = entry->ai_next)
        result.addresses.push_back(HostAddressOf(*entry));
    return result;
}

inline std::optional<std::string> NameOf(const std::string& address) {
    addrinfo hints = {};
    hints.ai_flags = AI_NUMERICHOST;
    addrinfo* found = nullptr;
    if (::getaddrinfo(address.c_str(), nullptr, &hints, &found) != 0) return {};
    const AddressList list(found, &::freeaddrinfo);
    return TextOf(list->ai_addr, list->ai_addrlen, NI_NAMEREQD);
}

struct LocalEnd {
    std::string host;
    unsigned short port;
};

template <class SystemSocket>
std::optional<LocalEnd> LocalEndOf(SystemSocket socket) {
    sockaddr_storage address = {};
    AddressLength length = sizeof address;
    auto* const any = reinterpret_cast<sockaddr*>(&address);
    if (::getsockname(socket, any, &length) != 0) return {};
    const auto port = address.ss_family == AF_INET6
                          ? reinterpret_cast<const sockaddr_in6*>(any)->sin6_port
                          : reinterpret_cast<const sockaddr_in*>(any)->sin_port;
    return LocalEnd{NumericText(any, static_cast<std::size_t>(length)), ntohs(port)};
}

}  // namespace VelSockTools
