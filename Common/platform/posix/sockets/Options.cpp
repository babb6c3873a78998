#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/BooleanOption.h"
#include "sockets/Connection.h"
#include "sockets/Memberships.h"
#include "sockets/MergedQueue.h"
#include "sockets/PortReuse.h"
#include "sockets/SocketTable.h"

#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

using namespace Posix;

constexpr std::uint32_t NoTimeLimit = 0xFFFFFFFFU;

bool IsKnownLevel(int level) {
    // Both systems use the protocols' numbers for the levels of IPv4 and IPv6.
    return level == Winsock::LevelSocket || level == IPPROTO_IP || level == IPPROTO_IPV6 ||
           level == Winsock::ProtocolTcp || level == Winsock::ProtocolUdp;
}

timeval TimeFromMilliseconds(std::uint32_t milliseconds) {
    if (milliseconds == NoTimeLimit) return {};
    return {.tv_sec = milliseconds / 1000U,
            .tv_usec = static_cast<suseconds_t>(milliseconds % 1000U * 1000U)};
}

int SetTimeout(const Socket& socket, int kernelOption, std::uint32_t flag, const char* value,
               int length) {
    std::uint32_t milliseconds = 0;
    if (length < static_cast<int>(sizeof milliseconds)) return Fail(WinsockError::Fault);
    std::memcpy(&milliseconds, value, sizeof milliseconds);
    const timeval time = TimeFromMilliseconds(milliseconds);
    if (socket.Has(Flag::Listening)) socket.entry->Set(Flag::NewTimeouts);
    if (::setsockopt(socket.descriptor, SOL_SOCKET, kernelOption, &time, sizeof time) < 0) {
        return FailFromErrno();
    }
    socket.entry->Change(flag, milliseconds != 0 && milliseconds != NoTimeLimit);
    return Succeed();
}

bool IsOn(const char* value, int length) {
    return std::any_of(value, value + length, [](char byte) { return byte != 0; });
}

int SetReuse(const Socket& socket, const char* value, int length) {
    if (length < 0) return Fail(WinsockError::Fault);
    const bool on = IsOn(value, length);
    if (!SetPortSharing(socket, on)) return FailFromErrno();
    socket.entry->Change(Flag::Reuse, on);
    return Succeed();
}

int SetBroadcast(const Socket& socket, const char* value, int length) {
    if (!socket.Has(Flag::Datagram)) return Fail(WinsockError::NoProtocolOption);
    if (length < 0) return Fail(WinsockError::Fault);
    const bool set =
        SetBooleanOption(socket.descriptor, SOL_SOCKET, SO_BROADCAST, IsOn(value, length));
    return set ? Succeed() : FailFromErrno();
}

int SetSocketOption(const Socket& socket, int option, const char* value, int length) {
    switch (option) {
        case Winsock::OptionReuseAddress:
            return SetReuse(socket, value, length);
        case Winsock::OptionBroadcast:
            return SetBroadcast(socket, value, length);
        case Winsock::OptionSendTimeout:
            return SetTimeout(socket, SO_SNDTIMEO, Flag::SendTimeout, value, length);
        case Winsock::OptionReceiveTimeout:
            return SetTimeout(socket, SO_RCVTIMEO, Flag::ReceiveTimeout, value, length);
        default:
            return Fail(WinsockError::NoProtocolOption);
    }
}

int SetNonBlocking(const Socket& socket, bool on) {
    int value = on ? 1 : 0;
    if (::ioctl(socket.descriptor, FIONBIO, &value) < 0) return FailFromErrno();
    socket.entry->Change(Flag::NonBlocking, on);
    return Succeed();
}

int AskForBytes(int descriptor, unsigned int& count) {
    return ::ioctl(descriptor, FIONREAD, &count) < 0 ? FailFromErrno() : Succeed();
}

[[gnu::cold, gnu::noinline]] int CountBytesOtherwise(const Socket& socket, unsigned int& count) {
    if (socket.Has(Flag::Datagram)) return AskForBytes(FirstToRead(socket), count);
    if (IsConnected(socket)) return AskForBytes(socket.descriptor, count);
    // The kernel refuses to answer for a listener, which has 0 bytes like any unconnected stream.
    count = 0;
    return Succeed();
}

// A selection asks three times for each socket that is ready, nearly always a connected stream.
int CountBytes(const Socket& socket, unsigned int& count) {
    if (socket.Has(Flag::DirectReceive)) [[likely]]
        return AskForBytes(socket.descriptor, count);
    return CountBytesOtherwise(socket, count);
}

}  // namespace

int Winsock::setsockopt(Handle handle, int level, int option, const char* value, int length) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (!IsKnownLevel(level)) return Fail(WinsockError::Invalid);
    const bool membership = IsMembershipOption(level, option);
    if (level != LevelSocket && !membership) return Fail(WinsockError::NoProtocolOption);
    if (value == nullptr) return Fail(WinsockError::Fault);
    if (membership) return SetMembership(socket, level, option, value, length);
    return SetSocketOption(socket, option, value, length);
}

int Winsock::ioctlsocket(Handle handle, unsigned int command, unsigned int* argument) {
    const Socket socket = FindSocket(handle);
    if (!socket) return SocketError;
    if (command != CommandNonBlocking && command != CommandBytesAvailable) {
        return Fail(WinsockError::OperationNotSupported);
    }
    if (argument == nullptr) return Fail(WinsockError::Fault);
    if (command == CommandNonBlocking) return SetNonBlocking(socket, *argument != 0);
    return CountBytes(socket, *argument);
}
