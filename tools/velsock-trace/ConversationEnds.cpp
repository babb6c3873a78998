// How conversations end and are forgotten.
#include <algorithm>
#include <cstdlib>

#include "Conversations.h"

namespace VelSockTrace {

void Conversations::Settle() {
    while (!lingering_.empty())
        Forget(lingering_.front());
}

void Conversations::Finish() {
    while (!open_.empty())
        Linger(open_.front(), open_.front().last);
    Settle();
}

// A time far off, before or after, is a fault of the log; it must not keep anything waiting.
void Conversations::KeepLimits(std::int64_t now) {
    while (!lingering_.empty() &&
           (lingering_.size() > limits_.lingering ||
            std::abs(now - lingering_.front().lingersFrom) > limits_.lingerTime))
        Forget(lingering_.front());
    if (open_.size() <= limits_.open) return;
    open_.front().isForgotten = true;
    Linger(open_.front(), now);
}

void Conversations::Touch(Tracked& conversation, const Record& record) {
    conversation.start = std::min(conversation.start, record.time);
    conversation.last = std::max(conversation.last, record.time);
    if (!conversation.isLingering) open_.splice(open_.end(), open_, conversation.place);
}

void Conversations::End(const Place& place, const Record& record) {
    Tracked& conversation = *place.conversation;
    conversation.sides[place.side].hasEnded = true;
    CountClosed(conversation, place.side);
    Touch(conversation, record);
    observer_.Disconnected(conversation, place.side, record);
    Reveal(conversation);
    if (conversation.HasEnded() && !conversation.isLingering) Linger(conversation, record.time);
}

void Conversations::Linger(Tracked& conversation, std::int64_t from) {
    if (conversation.isLingering) return;
    for (const std::size_t side : {0U, 1U})
        CountClosed(conversation, side);
    conversation.isLingering = true;
    conversation.lingersFrom = from;
    lingering_.splice(lingering_.end(), open_, conversation.place);
    otherEnds_.Add(conversation);
}

// The other side's records come, or more of the same.
void Conversations::Revive(Tracked& conversation) {
    otherEnds_.Remove(conversation);
    conversation.isLingering = false;
    open_.splice(open_.end(), lingering_, conversation.place);
}

void Conversations::CountOpen(Tracked& conversation, std::size_t side) {
    conversation.isOpen[side] = true;
    ++logs_[conversation.sides[side].log].openStreams;
}

void Conversations::CountClosed(Tracked& conversation, std::size_t side) {
    if (!conversation.isOpen[side]) return;
    conversation.isOpen[side] = false;
    --logs_[conversation.sides[side].log].openStreams;
}

void Conversations::Hide(Tracked& older, Tracked& newer) noexcept {
    newer.isUncertain = true;
    newer.hidden = &older;
    older.hiddenBy = &newer;
}

// What follows with this key belongs to the older conversation again.
void Conversations::Reveal(Tracked& conversation) {
    Tracked* const hidden = conversation.hidden;
    if (hidden == nullptr) return;
    conversation.hidden = nullptr;
    hidden->hiddenBy = nullptr;
    for (const auto& [log, key] : hidden->keys)
        logs_[log].places[key].conversation = hidden;
}

void Conversations::Forget(Tracked& conversation) {
    Tracked* const other = joints_ == nullptr ? otherEnds_.Of(conversation) : nullptr;
    if (other == nullptr) {
        observer_.Forgotten(conversation);
        Erase(conversation);
        return;
    }
    const bool isFirst = conversation.number < other->number;
    Tracked& kept = isFirst ? conversation : *other;
    Join(kept, isFirst ? *other : conversation);
    observer_.Forgotten(kept);
    Erase(kept);
}

// Each one's first side is the other one's second.
void Conversations::Join(Tracked& kept, Tracked& other) {
    otherEnds_.Remove(kept);
    kept.sides[1] = other.sides[0];
    for (const std::size_t end : {0U, 1U}) {
        kept.flows[end].logged[1] = other.flows[1 - end].logged[0];
        kept.ends[end] = Completed(kept.ends[end], other.ends[1 - end]);
    }
    kept.start = std::min(kept.start, other.start);
    kept.last = std::max(kept.last, other.last);
    kept.failures += other.failures;
    if (!kept.client && other.client) kept.client = 1 - *other.client;
    if (kept.loss == 0) kept.loss = other.loss;
    observer_.Joined(kept.number, other.number);
    Erase(other);
}

void Conversations::Erase(Tracked& conversation) {
    otherEnds_.Remove(conversation);
    EraseKeys(conversation);
    if (conversation.hiddenBy != nullptr) conversation.hiddenBy->hidden = conversation.hidden;
    if (conversation.hidden != nullptr) conversation.hidden->hiddenBy = conversation.hiddenBy;
    if (joints_ != nullptr) numbers_.erase(conversation.number);
    const auto exact = exact_.find(conversation.exactKey);
    if (exact != exact_.end() && exact->second == &conversation) exact_.erase(exact);
    (conversation.isLingering ? lingering_ : open_).erase(conversation.place);
}

// A newer conversation may have taken the keys over.
void Conversations::EraseKeys(Tracked& conversation) {
    for (const auto& [index, key] : conversation.keys) {
        Log& log = logs_[index];
        const auto place = log.places.find(key);
        if (place != log.places.end() && place->second.conversation == &conversation)
            log.places.erase(place);
        std::erase_if(log.accepted,
                      [&](const Place& other) { return other.conversation == &conversation; });
        if (log.unnamed.conversation == &conversation) log.unnamed = {};
    }
}

}  // namespace VelSockTrace
