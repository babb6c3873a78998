#include "Socket/SocketCollectionImpl.h"

#include "Socket/FailureText.h"
#include "Socket/WatchedSockets.h"
#include "VelBase/LengthLimit.h"
#include "VelBase/SystemQueries.h"
#include "VelBase/WideLiteral.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>

namespace VelNet {

using VelBase::operator""_wide;

namespace {

constexpr unsigned int NotFound = 0xFFFFFFFFU;

// Capped at the longest time that System::Sleep takes.
unsigned long MillisecondsFrom(unsigned int seconds) noexcept {
    constexpr unsigned long long most = std::numeric_limits<unsigned long>::max() - 1;
    return static_cast<unsigned long>(std::min(seconds * 1000ULL, most));
}

// The event that a readable socket in this state stands for.
struct ReadableState {
    int status;
    int event;
};
constexpr ReadableState ReadableStates[] = {
    {STATUS_LISTENING, EVENT_ACCEPT},
    {STATUS_DATA_PENDING, EVENT_READ},
    {STATUS_IDLE, EVENT_CLOSE},
};

}  // namespace

SocketCollection* CreateSocketCollection() {
    return new SocketCollectionImpl;
}

void SocketCollectionImpl::Add(Socket* socket, int event) {
    VelBase::RequireRoom(entries_.size(), 1, entries_.max_size(), VelBase::ListTooLong);
    entries_.emplace_back(socket, event);
}

void SocketCollectionImpl::Remove(Socket* socket, int event) {
    // The entries may hold the last reference to the very socket that they are compared with.
    const VelBase::InterfaceHolder<Socket> kept(socket);
    entries_.remove_if([&](const Entry& entry) { return entry.Matches(*socket, event); });
}

unsigned int SocketCollectionImpl::GetCount() const {
    return static_cast<unsigned int>(entries_.size());
}

VelBase::ReturnPtrI<Socket> SocketCollectionImpl::GetSocket(unsigned int index) const {
    return {EntryAt(index).socket.Get()};
}

int SocketCollectionImpl::GetEvent(unsigned int index) const {
    return EntryAt(index).event;
}

unsigned int SocketCollectionImpl::Find(Socket* socket, int event) const {
    unsigned int index = 0;
    for (const Entry& entry : entries_) {
        if (entry.Matches(*socket, event)) return index;
        ++index;
    }
    return NotFound;
}

SocketCollection* SocketCollectionImpl::Select(unsigned int seconds) {
    WatchedSockets watched;
    for (const Entry& entry : entries_)
        watched.Watch(entry.Handle(), entry.event);
    // Required (Selecting.EmptyCollectionSleepsTheWholeTime): the system's select would fail at
    // once.
    if (watched.IsEmpty()) {
        VelBase::Sleep(MillisecondsFrom(seconds));
        return nullptr;
    }

    const int ready = watched.Wait(seconds);
    if (ready == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        ThrowSystemFailure("VelNet::SocketCollection::Select() - FAIL."_wide,
                           "Socket call ::select failed"_wide, error);
    }
    if (ready == 0) return nullptr;

    auto result = std::make_unique<SocketCollectionImpl>();
    for (const Entry& entry : entries_) {
        const Winsock::Handle handle = entry.Handle();
        if (watched.IsReadable(handle)) result->AddIfReadable(entry);
        if (entry.event == EVENT_WRITE && watched.IsWritable(handle))
            result->entries_.push_back(entry);
    }
    return result.release();
}

void SocketCollectionImpl::Destroy() {
    delete this;
}

const SocketCollectionImpl::Entry& SocketCollectionImpl::EntryAt(unsigned int index) const {
    return *std::next(entries_.begin(), index);
}

// Required (SelectResultReady.StatusIsAskedForThreeTimesWhateverTheEvent): the status is read again
// for each kind of event, and before the event is looked at.
void SocketCollectionImpl::AddIfReadable(const Entry& entry) {
    for (const ReadableState& readable : ReadableStates) {
        if (entry.socket->GetStatus() == readable.status && entry.event == readable.event)
            entries_.push_back(entry);
    }
}

}  // namespace VelNet
