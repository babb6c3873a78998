#include "Socket/WatchedSockets.h"

#include "VelNet/SocketCollection.h"

#include <algorithm>
#include <limits>

namespace VelNet {

bool WatchedSockets::Set::Contains(Winsock::Handle handle) const noexcept {
    const Winsock::Handle* const end = handles.handles + handles.count;
    return std::find(handles.handles, end, handle) != end;
}

void WatchedSockets::Set::Add(Winsock::Handle handle) noexcept {
    if (Contains(handle) || handles.count == Winsock::HandleSet::Room) return;
    handles.handles[handles.count++] = handle;
}

void WatchedSockets::Watch(Winsock::Handle handle, int event) noexcept {
    switch (event) {
        case EVENT_ACCEPT:
        case EVENT_READ:
        case EVENT_CLOSE:
            reading_.Add(handle);
            break;
        case EVENT_WRITE:
            writing_.Add(handle);
            break;
        default:
            return;
    }
    largest_ = std::max(largest_, handle);
}

int WatchedSockets::Wait(unsigned int seconds) {
    // The system's type is int.
    constexpr unsigned int most = std::numeric_limits<int>::max();
    const Winsock::TimeValue time = {static_cast<int>(std::min(seconds, most)), 0};
    return Winsock::select(static_cast<int>(largest_ + 1), reading_.OrNone(), writing_.OrNone(),
                           nullptr, &time);
}

}  // namespace VelNet
