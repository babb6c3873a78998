#include "sockets/AuxiliarySockets.h"

#include "errors/Errors.h"
#include "sockets/BooleanOption.h"
#include "sockets/Creation.h"
#include "sockets/DatagramFilter.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <mutex>
#include <new>
#include <utility>

namespace Posix {

namespace {

// --- The poll set

// Datagrams get a time stamp (SO_TIMESTAMPNS), so that the queues can be read in the order of
// arrival.
bool Merge(const Descriptor& pollSet, int descriptor) {
    if (!SetBooleanOption(descriptor, SOL_SOCKET, SO_TIMESTAMPNS, true)) return false;
    epoll_event event = {.events = EPOLLIN, .data = {.fd = descriptor}};
    return ::epoll_ctl(pollSet.Number(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

bool HavePollSet(const Socket& socket, Reception& reception) {
    if (reception.pollSet) return true;
    Descriptor made(MoveAboveStandardStreams(::epoll_create1(EPOLL_CLOEXEC)));
    if (!made || !Merge(made, socket.descriptor)) return false;
    reception.pollSetNumber.store(made.Number(), std::memory_order_release);
    reception.pollSet = std::move(made);
    return true;
}

// --- Opening

// Returns an empty owner with errno on failure.
Descriptor OpenAuxiliary(const Socket& socket, Reception& reception) {
    if (!HavePollSet(socket, reception)) return {};
    Descriptor made(MoveAboveStandardStreams(MakeDescriptor(socket.Has(Flag::Ipv6), true)));
    const bool complete = made && SetBooleanOption(made.Number(), SOL_SOCKET, SO_REUSEADDR, true) &&
                          Merge(reception.pollSet, made.Number());
    return complete ? std::move(made) : Descriptor();
}

// Also reserves memory in the list that it moves to when it is bound.
void Keep(Reception& reception, AuxiliarySocket opened, AuxiliarySockets& all) {
    reception.auxiliaries.reserve(reception.auxiliaries.size() + all.size() + 1);
    all.push_back(std::move(opened));
}

WinsockError OpenForBroadcast(const Socket& socket, Reception& reception,
                              const Destination& broadcast, AuxiliarySockets& opened) {
    Descriptor made = OpenAuxiliary(socket, reception);
    if (!made) return WinsockFromErrno(errno);
    Keep(reception, {broadcast, std::move(made)}, opened);
    return WinsockError::None;
}

// An IPv6 group is joined on one interface, but the kernel would deliver its datagrams from any.
Destination JoinedDestination(int descriptor, const GroupRequest& request) {
    Destination group = {GroupOf(request), 0};
    if (request.level == IPPROTO_IP) return group;
    group.interface = InterfaceOfGroup(descriptor, group.address);
    group.address.ipv6.sin6_scope_id = group.interface;
    return group;
}

const AuxiliarySocket* FindAuxiliary(const AuxiliarySockets& auxiliaries,
                                     const Destination& destination) {
    const auto found =
        std::find_if(auxiliaries.begin(), auxiliaries.end(), [&](const AuxiliarySocket& each) {
            return SameHost(each.destination.address, destination.address);
        });
    return found == auxiliaries.end() ? nullptr : &*found;
}

// A group that has an auxiliary socket already is joined with that one.
WinsockError OpenForGroup(const Socket& socket, Reception& reception, const GroupRequest& request,
                          AuxiliarySockets& opened) {
    Descriptor made = OpenAuxiliary(socket, reception);
    if (!made) return WinsockFromErrno(errno);
    if (const auto error = JoinGroup(made.Number(), request); IsError(error)) return error;
    const Destination group = JoinedDestination(made.Number(), request);
    const AuxiliarySocket* known = FindAuxiliary(reception.auxiliaries, group);
    if (known == nullptr) known = FindAuxiliary(opened, group);
    if (known != nullptr) return JoinGroup(known->descriptor.Number(), request);
    Keep(reception, {group, std::move(made)}, opened);
    return WinsockError::None;
}

WinsockError OpenForGroups(const Socket& socket, Reception& reception, AuxiliarySockets& opened) {
    for (const GroupRequest& request : reception.joinedItself) {
        if (!IsMember(socket.descriptor, request)) continue;
        if (const auto error = OpenForGroup(socket, reception, request, opened); IsError(error))
            return error;
    }
    return WinsockError::None;
}

// --- Binding

bool IsBroadcast(const Destination& destination) {
    const KernelAddress& address = destination.address;
    return address.any.sa_family == AF_INET && !IN_MULTICAST(ntohl(address.ipv4.sin_addr.s_addr));
}

bool Filter(const AuxiliarySocket& auxiliary, const KernelAddress* peer) {
    return FilterDatagrams(auxiliary.descriptor.Number(), auxiliary.destination.interface, peer);
}

bool BindTo(const AuxiliarySocket& auxiliary, std::uint16_t port) {
    const KernelAddress address = WithPort(auxiliary.destination.address, port);
    const socklen_t length = FamilyOf(address).addressLength;
    return ::bind(auxiliary.descriptor.Number(), &address.any, length) == 0;
}

// Another program may have bound the broadcast address without SO_REUSEADDR; binding to the local
// address must succeed nevertheless.
WinsockError BindAuxiliary(Reception& reception, AuxiliarySocket& auxiliary, std::uint16_t port,
                           const KernelAddress* peer) {
    if (!Filter(auxiliary, peer)) return WinsockFromErrno(errno);
    if (!BindTo(auxiliary, port)) {
        return IsBroadcast(auxiliary.destination) ? WinsockError::None : WinsockFromErrno(errno);
    }
    reception.auxiliaries.push_back(std::move(auxiliary));
    return WinsockError::None;
}

WinsockError BindAll(const Socket& socket, Reception& reception, AuxiliarySockets& opened,
                     const KernelAddress* peer) {
    KernelAddress local = {};
    if (!LocalAddress(socket, local)) return WinsockFromErrno(errno);
    for (AuxiliarySocket& auxiliary : opened) {
        if (const auto error = BindAuxiliary(reception, auxiliary, PortOf(local), peer);
            IsError(error))
            return error;
    }
    return WinsockError::None;
}

// Leaves the groups, which the auxiliary sockets have joined.
void LeaveAllItself(const Socket& socket, Reception& reception) {
    for (const GroupRequest& request : reception.joinedItself)
        LeaveGroup(socket.descriptor, request);
    reception.joinedItself.clear();
}

// While it has a peer, a socket that was bound to all addresses is bound to one, and its groups
// need auxiliary sockets.
WinsockError MoveGroups(const Socket& socket, Reception& reception, const KernelAddress& peer) {
    AuxiliarySockets opened;
    if (const auto error = OpenForGroups(socket, reception, opened); IsError(error)) return error;
    if (const auto error = BindAll(socket, reception, opened, &peer); IsError(error)) return error;
    LeaveAllItself(socket, reception);
    return WinsockError::None;
}

}  // namespace

WinsockError OpenAuxiliaries(const Socket& socket, const KernelAddress& address,
                             AuxiliarySockets& opened) try {
    if (IsWildcard(address)) return WinsockError::None;
    const std::lock_guard guard(receptionLock);
    for (const Destination& broadcast : BroadcastsAt(socket.descriptor, address)) {
        const WinsockError error = OpenForBroadcast(socket, ReceptionOf(socket), broadcast, opened);
        if (IsError(error)) return error;
    }
    Reception* const reception = FindReception(socket);
    return reception == nullptr ? WinsockError::None : OpenForGroups(socket, *reception, opened);
} catch (const std::bad_alloc&) {
    return WinsockError::NoBuffers;
}

WinsockError BindAuxiliaries(const Socket& socket, const KernelAddress& address,
                             AuxiliarySockets& opened) {
    if (IsWildcard(address)) return WinsockError::None;
    socket.entry->Set(Flag::OwnAddress);
    const std::lock_guard guard(receptionLock);
    Reception* const reception = FindReception(socket);
    if (reception == nullptr) return WinsockError::None;
    if (const auto error = BindAll(socket, *reception, opened, nullptr); IsError(error))
        return error;
    LeaveAllItself(socket, *reception);
    return WinsockError::None;
}

WinsockError JoinByAuxiliary(const Socket& socket, Reception& reception,
                             const GroupRequest& request) {
    KernelAddress peer = {};
    const bool connected = socket.Has(Flag::Connected);
    if (connected && !PeerAddress(socket, peer)) return WinsockFromErrno(errno);
    AuxiliarySockets opened;
    if (const auto error = OpenForGroup(socket, reception, request, opened); IsError(error))
        return error;
    return BindAll(socket, reception, opened, connected ? &peer : nullptr);
}

WinsockError FollowPeer(const Socket& socket, const KernelAddress* peer) try {
    if (!socket.Has(Flag::Reception)) return WinsockError::None;
    const std::lock_guard guard(receptionLock);
    Reception& reception = ReceptionOf(socket);
    for (const AuxiliarySocket& auxiliary : reception.auxiliaries) {
        if (!Filter(auxiliary, peer)) return WinsockFromErrno(errno);
    }
    return peer == nullptr ? WinsockError::None : MoveGroups(socket, reception, *peer);
} catch (const std::bad_alloc&) {
    return WinsockError::NoBuffers;
}

}  // namespace Posix
