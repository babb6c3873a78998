// getnameinfo: from addresses to host and service strings.
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "names/NumericHosts.h"
#include "names/ResolverErrors.h"
#include "sockets/KernelAddress.h"
#include "sockets/StartUp.h"

#include <netdb.h>

#include <cstring>
#include <string_view>

namespace {

using namespace Posix;

// The buffer for one of the strings, which is not wanted if the size is 0.
struct TextRoom {
    char* text;
    unsigned int size;

    bool IsWanted() const noexcept { return text != nullptr && size > 0; }
};

WinsockError Write(const TextRoom& room, std::string_view text) noexcept {
    if (text.size() >= room.size) return WinsockError::InsufficientBuffer;
    std::memcpy(room.text, text.data(), text.size());
    room.text[text.size()] = '\0';
    return WinsockError::None;
}

WinsockError FlagsError(int flags) noexcept {
    constexpr int known = Winsock::NumericHost | Winsock::NumericService | Winsock::DatagramService;
    return (flags & ~known) != 0 ? WinsockError::Invalid : WinsockError::None;
}

// Returns the host's name, or the numeric address if there is none.
WinsockError WriteHost(const KernelAddress& address, int flags, const TextRoom& room) {
    if (!room.IsWanted()) return WinsockError::None;
    WinsockError error = WinsockError::HostNotFound;
    if ((flags & Winsock::NumericHost) == 0) {
        error = Ask([&] {
            return ::getnameinfo(&address.any, FamilyOf(address).addressLength, room.text,
                                 room.size, nullptr, 0, NI_NAMEREQD);
        });
    }
    if (error != WinsockError::HostNotFound) return error;
    return Write(room, FormatNumericHost(address));
}

WinsockError WriteService(const KernelAddress& address, int flags, const TextRoom& room) {
    if (!room.IsWanted()) return WinsockError::None;
    if ((flags & Winsock::NumericService) != 0) {
        return Write(room, FormatNumericPort(PortOf(address)));
    }
    const int datagrams = (flags & Winsock::DatagramService) != 0 ? NI_DGRAM : 0;
    return Ask([&] {
        return ::getnameinfo(&address.any, FamilyOf(address).addressLength, nullptr, 0, room.text,
                             room.size, datagrams);
    });
}

WinsockError WriteTexts(const void* source, int length, const TextRoom& host,
                        const TextRoom& service, int flags) {
    if (!IsStarted()) return WinsockError::NotStarted;
    KernelAddress address = {};
    if (const auto error = KernelFromWinsock(source, length, address); IsError(error)) return error;
    if (const auto error = FlagsError(flags); IsError(error)) return error;
    if (!host.IsWanted() && !service.IsWanted()) return WinsockError::HostNotFound;
    const WinsockError error = WriteHost(address, flags, host);
    return IsError(error) ? error : WriteService(address, flags, service);
}

}  // namespace

int Winsock::getnameinfo(const void* address, int addressLength, char* host, unsigned int hostRoom,
                         char* service, unsigned int serviceRoom, int flags) {
    return ReturnError(
        WriteTexts(address, addressLength, {host, hostRoom}, {service, serviceRoom}, flags));
}
