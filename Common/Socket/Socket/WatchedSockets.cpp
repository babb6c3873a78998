#include "Socket/WatchedSockets.h"

#include "VelNet/SocketCollection.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace VelNet {

std::size_t WatchedSockets::Set::SlotOf(Winsock::Handle handle) const noexcept {
    std::size_t slot = handle % Slots;
    while (places[slot] != 0 && handles.handles[places[slot] - 1] != handle)
        slot = (slot + 1) % Slots;
    return slot;
}

void WatchedSockets::Set::Add(Winsock::Handle handle) noexcept {
    const std::size_t slot = SlotOf(handle);
    if (places[slot] != 0 || handles.count == Winsock::HandleSet::Room) return;
    handles.handles[handles.count++] = handle;
    places[slot] = static_cast<unsigned char>(handles.count);
}

void WatchedSockets::Set::IndexHandles() noexcept {
    std::fill(std::begin(places), std::end(places), static_cast<unsigned char>(0));
    for (unsigned int index = 0; index < handles.count; ++index)
        places[SlotOf(handles.handles[index])] = static_cast<unsigned char>(index + 1);
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
    const int ready = Winsock::select(static_cast<int>(largest_ + 1), reading_.OrNone(),
                                      writing_.OrNone(), nullptr, &time);
    reading_.IndexHandles();
    writing_.IndexHandles();
    return ready;
}

}  // namespace VelNet
