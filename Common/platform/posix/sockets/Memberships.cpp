#include "sockets/Memberships.h"

#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/AuxiliarySockets.h"
#include "sockets/GroupRequest.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <new>

namespace Posix {

namespace {

int LengthOfRequest(int level) {
    return level == Winsock::LevelIpv6 ? sizeof(ipv6_mreq) : sizeof(ip_mreq);
}

// The kernel would accept an IPv4 request on an IPv6 socket.
WinsockError MembershipError(const Socket& socket, int level, int length) {
    const bool ofSocketsFamily = socket.Has(Flag::Ipv6) == (level == Winsock::LevelIpv6);
    if (!socket.Has(Flag::Datagram) || !ofSocketsFamily) return WinsockError::Invalid;
    return length < LengthOfRequest(level) ? WinsockError::Fault : WinsockError::None;
}

// Both systems use the protocols' numbers for these levels.
GroupRequest RequestFromWinsock(int level, const char* value) {
    GroupRequest request = {level};
    std::memcpy(request.bytes.data(), value, static_cast<std::size_t>(LengthOfRequest(level)));
    return request;
}

// Whether datagrams for other destinations than the socket's address need auxiliary sockets.
bool IsOnOneAddress(const Socket& socket) {
    return socket.Has(Flag::OwnAddress | Flag::Connected);
}

// Auxiliary sockets keep their memberships, even when their socket is on all addresses again.
bool HasJoinedByAuxiliary(const Reception& reception, const GroupRequest& request) {
    return std::any_of(
        reception.auxiliaries.begin(), reception.auxiliaries.end(),
        [&](const AuxiliarySocket& each) { return IsMember(each.descriptor.Number(), request); });
}

WinsockError JoinItself(const Socket& socket, Reception& reception, const GroupRequest& request) {
    if (HasJoinedByAuxiliary(reception, request)) return WinsockError::AddressNotAvailable;
    reception.joinedItself.reserve(reception.joinedItself.size() + 1);
    if (const auto error = JoinGroup(socket.descriptor, request); IsError(error)) return error;
    std::erase(reception.joinedItself, request);
    reception.joinedItself.push_back(request);
    return WinsockError::None;
}

WinsockError Join(const Socket& socket, const GroupRequest& request) try {
    const std::lock_guard guard(receptionLock);
    Reception& reception = ReceptionOf(socket);
    return IsOnOneAddress(socket) ? JoinByAuxiliary(socket, reception, request)
                                  : JoinItself(socket, reception, request);
} catch (const std::bad_alloc&) {
    return WinsockError::NoBuffers;
}

bool HasLeftByAuxiliary(const Reception& reception, const GroupRequest& request) {
    return std::any_of(reception.auxiliaries.begin(), reception.auxiliaries.end(),
                       [&](const AuxiliarySocket& each) {
                           return !IsError(LeaveGroup(each.descriptor.Number(), request));
                       });
}

WinsockError Leave(const Socket& socket, const GroupRequest& request) {
    const std::lock_guard guard(receptionLock);
    Reception* const reception = FindReception(socket);
    if (reception != nullptr && HasLeftByAuxiliary(*reception, request)) return WinsockError::None;
    const WinsockError error = LeaveGroup(socket.descriptor, request);
    if (!IsError(error) && reception != nullptr) std::erase(reception->joinedItself, request);
    return error;
}

}  // namespace

bool IsMembershipOption(int level, int option) noexcept {
    const bool ofGroups =
        option == Winsock::OptionAddMembership || option == Winsock::OptionDropMembership;
    return ofGroups && (level == Winsock::LevelIpv4 || level == Winsock::LevelIpv6);
}

int SetMembership(const Socket& socket, int level, int option, const char* value, int length) {
    if (const auto error = MembershipError(socket, level, length); IsError(error))
        return Fail(error);
    const GroupRequest request = RequestFromWinsock(level, value);
    const bool join = option == Winsock::OptionAddMembership;
    const WinsockError error = join ? Join(socket, request) : Leave(socket, request);
    return IsError(error) ? Fail(error) : Succeed();
}

}  // namespace Posix
