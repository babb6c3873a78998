// Waits for many sockets at once. Uses poll, since the system's select takes no descriptor from
// FD_SETSIZE (1024) on.
#include "Platform/Winsock.h"
#include "errors/Errors.h"
#include "sockets/Connection.h"
#include "sockets/DatagramLosses.h"
#include "sockets/ErrorQueue.h"
#include "sockets/MergedQueue.h"
#include "sockets/SocketTable.h"
#include "sockets/StartUp.h"
#include "system/FixedList.h"
#include "system/Waiting.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>

namespace {

using namespace Posix;

// What the sets are for, each as the event that poll waits for.
enum class Interest : short { Read = POLLIN, Write = POLLOUT, Except = 0 };

constexpr short EventOf(Interest interest) noexcept {
    return static_cast<short>(interest);
}

// Whether the socket is ready without asking the kernel.
bool IsReadyAlready(const Socket& socket, Interest interest) {
    switch (interest) {
        case Interest::Read:
            return HasLoss(socket);
        case Interest::Except:
            return socket.Has(Flag::ConnectFailed);
        default:
            return false;
    }
}

// Returns the descriptor that poll is to wait for if the socket is not ready already.
int DescriptorFor(const Socket& socket, Interest interest) {
    const bool queue = interest == Interest::Read && socket.Has(Flag::Datagram);
    return queue ? DescriptorToWatch(socket) : socket.descriptor;
}

// POLLERR of a datagram socket means an ICMP error or a local one. An ICMP error makes the socket
// readable; a local error does not make it ready for anything.
bool IsReadyDatagram(const Socket& socket, Interest interest, short events) {
    if (interest == Interest::Read) events = EventsToRead(socket, events);
    if ((events & POLLERR) != 0) CollectAnnounced(socket);
    return (events & EventOf(interest)) != 0 || IsReadyAlready(socket, interest);
}

// poll returns POLLHUP, which cannot be masked, for a stream that is neither connected nor
// listening. A connect call that was left unfinished and then failed is only in the set for
// exceptions.
bool IsReadyStream(const Socket& socket, Interest interest) {
    // Nearly always a plain connection.
    if (socket.Has(Flag::DirectReceive)) [[likely]]
        return interest != Interest::Except;
    const bool connected = IsConnected(socket);
    if (interest == Interest::Except) return socket.Has(Flag::ConnectFailed);
    return connected || socket.Has(Flag::Listening);
}

// One handle of one set.
struct Entry {
    Socket socket;
    Interest interest = Interest::Read;
    bool ready = false;
};

// Finds the handles of a set that are named again.
class NamedHandles {
public:
    explicit NamedHandles(const Winsock::HandleSet& set) noexcept : set_(set) {}

    // Takes a handle and its index. Returns false if the set has named it before.
    bool Add(Winsock::Handle handle, unsigned int index) noexcept {
        std::size_t slot = handle % Slots;
        for (; slots_[slot] != 0; slot = (slot + 1) % Slots) {
            if (set_.handles[slots_[slot] - 1] == handle) return false;
        }
        slots_[slot] = static_cast<unsigned char>(index + 1);
        return true;
    }

private:
    // Twice as many as a set has handles, so that a free one is near.
    static constexpr std::size_t Slots = std::size_t{2} * Winsock::HandleSet::Room;

    const Winsock::HandleSet& set_;
    unsigned char slots_[Slots] = {};  // 1 more than the handle's index; 0 in a free slot
};

class Selection {
public:
    // Returns false, with the last error set, for an invalid set.
    bool Add(const Winsock::HandleSet* set, Interest interest);

    // Waits until an entry is ready or the deadline has passed. Returns how many are ready, or a
    // failure.
    int Wait(long long until);

    // Leaves only the ready handles in the set.
    void Answer(Winsock::HandleSet* set, Interest interest) const;

private:
    static constexpr std::size_t Room = std::size_t{3} * Winsock::HandleSet::Room;

    void Watch(Socket socket, Interest interest);
    void WatchOtherwise(Entry& entry, pollfd& wait);
    long long NextLook(long long until) const;
    bool IsAnyClosed() const;
    bool Judge();
    void JudgeEntry(Entry& entry, pollfd& wait);

    FixedList<Entry, Room> entries_;
    pollfd waits_[Room];  // parallel to the entries; descriptor -1 where nothing is awaited
    int ready_ = 0;
    bool isAnyUnwatched_ = false;
};

bool Selection::Add(const Winsock::HandleSet* set, Interest interest) {
    if (set == nullptr) return true;
    if (set->count > Winsock::HandleSet::Room) {
        Fail(WinsockError::Invalid);
        return false;
    }
    NamedHandles named(*set);
    for (unsigned int index = 0; index < set->count; ++index) {
        const Winsock::Handle handle = set->handles[index];
        Socket socket = FindSocket(handle);
        if (!socket) return false;
        if (named.Add(handle, index)) Watch(std::move(socket), interest);
    }
    return true;
}

void Selection::Watch(Socket socket, Interest interest) {
    pollfd& wait = waits_[entries_.Count()];
    wait = {socket.descriptor, EventOf(interest), 0};
    Entry& entry = entries_.Add({std::move(socket), interest, false});
    // Nearly always a stream, of which only the kernel knows more.
    if (entry.socket.Has(Flag::Datagram | Flag::ConnectFailed)) [[unlikely]]
        WatchOtherwise(entry, wait);
}

void Selection::WatchOtherwise(Entry& entry, pollfd& wait) {
    entry.ready = IsReadyAlready(entry.socket, entry.interest);
    if (entry.ready) ++ready_;
    wait.fd = entry.ready ? -1 : DescriptorFor(entry.socket, entry.interest);
}

// The wait goes on if the kernel has woken it for something that Winsock ignores.
int Selection::Wait(long long until) {
    constexpr long long atOnce = 0;
    if (ready_ > 0) until = atOnce;
    do {
        const int found = PollUntil(waits_, entries_.Count(), NextLook(until));
        if (found < 0 && errno != EINTR) return FailFromErrno();
        if (IsAnyClosed()) return Fail(WinsockError::Interrupted);
        if (found > 0 && !Judge()) return Fail(WinsockError::NotSocket);
    } while (ready_ == 0 && (until == WithoutLimit || MonotonicTime() < until));
    return ready_;
}

// poll ignores an unwatched stream (descriptor -1) and so is not woken when another thread closes
// it. It returns every ten milliseconds to check; closesocket waits for this call as long.
long long Selection::NextLook(long long until) const {
    if (!isAnyUnwatched_) return until;
    const long long next = MonotonicTime() + 10'000'000;
    return until == WithoutLimit ? next : std::min(until, next);
}

bool Selection::IsAnyClosed() const {
    return std::any_of(entries_.begin(), entries_.end(),
                       [](const Entry& entry) { return !entry.socket.IsOpen(); });
}

// Returns false if a descriptor is invalid: something outside the library has closed it.
bool Selection::Judge() {
    for (std::size_t index = 0; index < entries_.Count(); ++index) {
        const short events = waits_[index].revents;
        if (events == 0) continue;
        if ((events & POLLNVAL) != 0) return false;
        JudgeEntry(entries_[index], waits_[index]);
    }
    return true;
}

void Selection::JudgeEntry(Entry& entry, pollfd& wait) {
    const bool datagram = entry.socket.Has(Flag::Datagram);
    entry.ready = datagram ? IsReadyDatagram(entry.socket, entry.interest, wait.revents)
                           : IsReadyStream(entry.socket, entry.interest);
    if (entry.ready) ++ready_;
    if (datagram) return;
    // The condition that poll has reported of a stream lasts, so that watching it further would end
    // every poll at once.
    wait.fd = -1;
    isAnyUnwatched_ = true;
}

void Selection::Answer(Winsock::HandleSet* set, Interest interest) const {
    if (set == nullptr) return;
    set->count = 0;
    for (const Entry& entry : entries_) {
        if (!entry.ready || entry.interest != interest) continue;
        set->handles[set->count++] = static_cast<Winsock::Handle>(entry.socket.descriptor);
    }
}

bool IsEmpty(const Winsock::HandleSet* set) {
    return set == nullptr || set->count == 0;
}

bool IsNegative(const Winsock::TimeValue* time) {
    return time != nullptr && (time->seconds < 0 || time->microseconds < 0);
}

long long EndOf(const Winsock::TimeValue* time) {
    if (time == nullptr) return WithoutLimit;
    return MonotonicTime() + time->seconds * 1'000'000'000LL + time->microseconds * 1'000LL;
}

}  // namespace

int Winsock::select(int, HandleSet* read, HandleSet* write, HandleSet* except,
                    const TimeValue* timeout) {
    const long long end = EndOf(timeout);
    if (!RequireStarted()) return SocketError;
    if (IsEmpty(read) && IsEmpty(write) && IsEmpty(except)) return Fail(WinsockError::Invalid);
    Selection selection;
    if (!selection.Add(read, Interest::Read) || !selection.Add(write, Interest::Write) ||
        !selection.Add(except, Interest::Except)) {
        return SocketError;
    }
    if (IsNegative(timeout)) return Fail(WinsockError::Invalid);
    const int ready = selection.Wait(end);
    if (ready < 0) return SocketError;
    selection.Answer(read, Interest::Read);
    selection.Answer(write, Interest::Write);
    selection.Answer(except, Interest::Except);
    return Succeed(ready);
}
