// How a record's conversation is found.
#include <array>
#include <charconv>

#include "Conversations.h"

namespace VelSockTrace {

namespace {

std::string_view PutNumber(std::array<char, 24>& room, std::uint64_t number) noexcept {
    const auto result = std::to_chars(room.data(), room.data() + room.size(), number);
    return {room.data(), static_cast<std::size_t>(result.ptr - room.data())};
}

const Endpoint& RemoteOf(const Place& place) noexcept {
    return place.conversation->ends[1 - place.side];
}

bool HasAddress(const Endpoint& remote) noexcept {
    return remote.address.version != 0 && remote.port != 0;
}

}  // namespace

// A datagram socket speaks with several others.
std::string_view Conversations::KeyOf(const Record& record) {
    if (record.mark == 0) return record.ends;
    std::array<char, 24> room;
    key_.clear();
    (key_ += '#') += PutNumber(room, record.process);
    (key_ += ':') += PutNumber(room, record.mark);
    if (IsDatagram(record.kind)) (key_ += ' ') += record.ends;
    return key_;
}

Place Conversations::FindKey(std::string_view key) const {
    const Places& places = logs_[log_].places;
    const auto found = places.find(key);
    return found == places.end() ? Place() : found->second;
}

Place Conversations::Find(const Record& record) {
    return IsNameless(record) ? FindUnnamed() : FindKey(KeyOf(record));
}

// The records that follow are those of the connection that was accepted, if it is the only one
// without records of its own. The listening socket may have been closed already, which looks like
// the connection's end.
Place Conversations::FindUnnamed() {
    Log& log = logs_[log_];
    if (log.unnamed.conversation != nullptr) return log.unnamed;
    Place found;
    std::size_t count = 0;
    for (const Place& candidate : log.accepted) {
        if (!IsFresh(candidate) || !HasAddress(RemoteOf(candidate))) continue;
        found = candidate;
        ++count;
    }
    if (count != 1) return {};
    Adopt(found);
    return log.unnamed = found;
}

void Conversations::Adopt(const Place& place) {
    Tracked& conversation = *place.conversation;
    if (conversation.isLingering) Revive(conversation);
    conversation.isFresh[place.side] = false;
    Side& side = conversation.sides[place.side];
    side.isAccepted = true;
    side.hasEnded = false;
    conversation.client = 1 - place.side;
    if (!conversation.isOpen[place.side]) CountOpen(conversation, place.side);
}

Place Conversations::FindFailed(const Record& record, const FailureRecord& failure) {
    if (record.mark != 0) return FindKey(KeyOf(record));
    if (const Place place = FindKey(failure.ends); place.conversation != nullptr) return place;
    return failure.isTransfer ? FindOnly() : Place();
}

// A failure whose text does not tell the ends is that of the log's only connection.
Place Conversations::FindOnly() noexcept {
    if (logs_[log_].openStreams != 1) return {};
    // NOLINTNEXTLINE(modernize-loop-convert): the one that was heard of last comes first.
    for (auto entry = open_.rbegin(); entry != open_.rend(); ++entry) {
        for (const std::size_t side : {0U, 1U}) {
            if (entry->isOpen[side] && entry->sides[side].log == log_) return {&*entry, side};
        }
    }
    return {};
}

// Returns the conversation whose other side has these ends.
Tracked* Conversations::Mirrored(const Ends& ends) const {
    if (!ends.local.IsExact() || !ends.remote.IsExact()) return nullptr;
    const auto found = exact_.find(ExactKey(ends.local, ends.remote));
    if (found == exact_.end()) return nullptr;
    Tracked& other = *found->second;
    const bool fits = !other.sides[1].isLogged && other.ends[1].address == ends.local.address &&
                      other.ends[1].port == ends.local.port;
    return fits ? &other : nullptr;
}

}  // namespace VelSockTrace
