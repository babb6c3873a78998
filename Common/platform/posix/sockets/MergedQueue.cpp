#include "sockets/MergedQueue.h"

#include "sockets/ErrorQueue.h"
#include "sockets/Reception.h"
#include "system/Descriptors.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <iterator>
#include <limits>

namespace Posix {

static_assert(EPOLLIN == POLLIN && EPOLLERR == POLLERR && EPOLLHUP == POLLHUP);

namespace {

// The queues that are readable or have reports. If there are more than fit, the others come up the
// next time.
struct ReadyQueues {
    explicit ReadyQueues(int pollSet) noexcept;

    epoll_event events[16];
    int count;
};

ReadyQueues::ReadyQueues(int pollSet) noexcept {
    const CancellationGuard whole;
    count = ::epoll_wait(pollSet, events, static_cast<int>(std::size(events)), 0);
}

struct StampRoom {
    alignas(cmsghdr) char bytes[CMSG_SPACE(sizeof(timespec))];
};

long long StampOf(msghdr& message) {
    const cmsghdr* const part = CMSG_FIRSTHDR(&message);
    if (part == nullptr || part->cmsg_type != SCM_TIMESTAMPNS) return 0;
    timespec stamp = {};
    std::memcpy(&stamp, CMSG_DATA(part), sizeof stamp);
    return stamp.tv_sec * 1'000'000'000LL + stamp.tv_nsec;
}

// Returns when the queue's first datagram arrived; the latest possible time if another thread has
// taken it meanwhile. A pending ICMP error fails the peek instead, once; it is the socket's own,
// since auxiliary sockets do not send.
long long FirstArrival(const Socket& socket, int descriptor) {
    StampRoom room;
    msghdr message = {};
    message.msg_control = room.bytes;
    message.msg_controllen = sizeof room.bytes;
    const CancellationGuard whole;
    if (::recvmsg(descriptor, &message, MSG_PEEK | MSG_DONTWAIT) >= 0) return StampOf(message);
    if (MayBeReport(errno)) CollectTold(socket);
    return std::numeric_limits<long long>::max();
}

// The network's reports come before datagrams, as in a single kernel queue.
long long Rank(const Socket& socket, const epoll_event& event) {
    return (event.events & EPOLLERR) != 0 ? 0 : FirstArrival(socket, event.data.fd);
}

int FirstOf(const Socket& socket, const ReadyQueues& ready) {
    int first = ready.events[0].data.fd;
    if (ready.count == 1) return first;
    long long firstRank = std::numeric_limits<long long>::max();
    for (int index = 0; index < ready.count; ++index) {
        const long long rank = Rank(socket, ready.events[index]);
        if (rank < firstRank) first = ready.events[index].data.fd;
        firstRank = std::min(rank, firstRank);
    }
    return first;
}

// Returns a negative number if the socket has only its own queue.
int PollSetOf(const Socket& socket) {
    const Reception* const reception = FindReception(socket);
    if (reception == nullptr) return -1;
    return reception->pollSetNumber.load(std::memory_order_acquire);
}

int FirstIn(int pollSet, const Socket& socket) {
    const ReadyQueues ready(pollSet);
    return ready.count > 0 ? FirstOf(socket, ready) : socket.descriptor;
}

}  // namespace

int DescriptorToWatch(const Socket& socket) noexcept {
    const int pollSet = PollSetOf(socket);
    return pollSet >= 0 ? pollSet : socket.descriptor;
}

short EventsToRead(const Socket& socket, short told) noexcept {
    const int pollSet = PollSetOf(socket);
    if (pollSet < 0) return told;
    const ReadyQueues ready(pollSet);
    std::uint32_t events = 0;
    for (int index = 0; index < ready.count; ++index)
        events |= ready.events[index].events;
    return static_cast<short>(events);
}

int FirstOfQueues(const Socket& socket) noexcept {
    const int pollSet = PollSetOf(socket);
    return pollSet < 0 ? socket.descriptor : FirstIn(pollSet, socket);
}

ssize_t ReceiveFirstOfQueues(const Socket& socket, msghdr& message, int flags) {
    const int pollSet = PollSetOf(socket);
    if (pollSet < 0) return ::recvmsg(socket.descriptor, &message, flags);
    return ::recvmsg(FirstIn(pollSet, socket), &message, flags | MSG_DONTWAIT);
}

}  // namespace Posix
