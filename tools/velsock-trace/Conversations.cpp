#include "Conversations.h"

#include <algorithm>

namespace VelSockTrace {

namespace {

// A connect that would block, or is under way, has not failed yet.
bool IsUnderWay(int number) noexcept {
    return number == 10035 || number == 10036;
}

void AddTo(Count& count, const Record& record) noexcept {
    count.bytes += record.length;
    ++count.transfers;
}

// An extended socket that has connected is recorded with the computer's name and no port, one that
// was accepted with the address that it listens on, and without a port if the system chose that.
std::optional<std::size_t> ClientByRecord(const Conversation& conversation, std::size_t side) {
    const Endpoint& local = conversation.ends[side];
    if (local.port != 0) return {};
    if (!ReadIpAddress(local.host)) return side;
    return conversation.ends[1 - side].port != 0 ? std::optional(1 - side) : std::nullopt;
}

}  // namespace

bool Conversations::Take(const Record& record, std::size_t log) {
    while (logs_.size() <= log)
        logs_.emplace_back();
    log_ = log;
    KeepLimits(record.time);
    if (IsTransfer(record.kind)) return Transfer(record);
    switch (record.kind) {
        case RecordKind::Connected:
            return Connect(record);
        case RecordKind::Disconnected:
            return Disconnect(record);
        case RecordKind::Failure:
            return Fail(record);
        default:
            return false;
    }
}

bool Conversations::Connect(const Record& record) {
    Supersede(record);
    const Place place = Begin(record);
    Tracked& conversation = *place.conversation;
    conversation.sides[place.side].hasConnected = true;
    if (!conversation.client) conversation.client = ClientByRecord(conversation, place.side);
    if (record.mark == 0) Await(place);
    Touch(conversation, record);
    observer_.Connected(conversation, place.side, record);
    return true;
}

bool Conversations::Transfer(const Record& record) {
    Place place = Find(record);
    if (place.conversation == nullptr) place = Begin(record);
    Tracked& conversation = *place.conversation;
    if (IsDatagram(record.kind)) conversation.isDatagrams = true;
    conversation.isFresh[place.side] = false;
    if (conversation.isLingering) otherEnds_.Remove(conversation);
    const std::size_t sender = IsSending(record.kind) ? place.side : 1 - place.side;
    if (!conversation.firstSender) conversation.firstSender = sender;
    LoggedFlow& flow = conversation.flows[sender].logged[place.side];
    AddTo(record.hasData ? flow.withData : flow.plain, record);
    if (conversation.isLingering) otherEnds_.Add(conversation);
    Touch(conversation, record);
    observer_.Transferred(conversation, place.side, record);
    return true;
}

// A listening socket that is closed is recorded with the ends of the connection that it has
// accepted last, and a socket that never had a connection with ends that are not known here.
bool Conversations::Disconnect(const Record& record) {
    const Place place = Find(record);
    if (place.conversation == nullptr) return false;
    if (IsNameless(record)) {
        logs_[log_].unnamed = {};
    } else if (place.conversation->sides[place.side].isAccepted) {
        return false;
    }
    End(place, record);
    return true;
}

bool Conversations::Fail(const Record& record) {
    const FailureRecord failure = ReadFailure(record.text);
    if (failure.isConnecting && !failure.isEnd) {
        if (failure.ends.empty() || IsUnderWay(failure.number)) return false;
        Refuse(record, failure);
        return true;
    }
    const Place place = FindFailed(record, failure);
    if (place.conversation == nullptr) return false;
    Tracked& conversation = *place.conversation;
    if (failure.isEnd) {
        conversation.sides[place.side].sawPeersEnd = true;
    } else {
        ++conversation.failures;
        if (IsLoss(failure.number)) conversation.loss = failure.number;
    }
    Touch(conversation, record);
    observer_.Failed(conversation, place.side, record, failure);
    return true;
}

void Conversations::Refuse(const Record& record, const FailureRecord& failure) {
    ++lastNumber_;
    Tracked& conversation = Create(record, ReadEnds(failure.ends));
    conversation.isRefused = true;
    conversation.client = 0;
    conversation.loss = failure.number;
    conversation.failures = 1;
    conversation.sides[0].isLogged = true;
    conversation.sides[0].log = log_;
    conversation.sides[0].hasEnded = true;
    observer_.Failed(conversation, 0, record, failure);
    Linger(conversation, record.time);
}

Place Conversations::Begin(const Record& record) {
    const Ends ends = ReadEnds(record.ends);
    const std::string_view key = KeyOf(record);
    if (Tracked* const other = Mirrored(ends)) return Attach(*other, 1, key);
    const unsigned int number = ++lastNumber_;
    if (const Place resumed = Resume(number, ends, key); resumed.conversation) return resumed;
    const Place place = Attach(Create(record, ends), 0, key);
    if (IsNameless(record)) logs_[log_].unnamed = place;
    return place;
}

// The conversation whose other end this number was found to be.
Place Conversations::Resume(unsigned int number, const Ends& ends, std::string_view key) {
    if (joints_ == nullptr) return {};
    const auto joint = joints_->find(number);
    if (joint == joints_->end()) return {};
    const auto found = numbers_.find(joint->second);
    if (found == numbers_.end()) return {};
    Tracked& conversation = *found->second;
    conversation.ends[0] = Completed(conversation.ends[0], ends.remote);
    conversation.ends[1] = Completed(conversation.ends[1], ends.local);
    return Attach(conversation, 1, key);
}

Tracked& Conversations::Create(const Record& record, const Ends& ends) {
    open_.emplace_back();
    Tracked& conversation = open_.back();
    conversation.place = std::prev(open_.end());
    conversation.number = lastNumber_;
    conversation.isDatagrams = IsDatagram(record.kind);
    conversation.ends = {ends.local, ends.remote};
    conversation.start = record.time;
    conversation.last = record.time;
    if (ends.local.IsExact() && ends.remote.IsExact()) {
        conversation.exactKey = ExactKey(ends.local, ends.remote);
        exact_[conversation.exactKey] = &conversation;
    }
    if (joints_ != nullptr) numbers_[conversation.number] = &conversation;
    observer_.Began(conversation);
    return conversation;
}

Place Conversations::Attach(Tracked& conversation, std::size_t side, std::string_view key) {
    if (conversation.isLingering) Revive(conversation);
    conversation.sides[side].isLogged = true;
    conversation.sides[side].log = log_;
    if (!conversation.isDatagrams) CountOpen(conversation, side);
    const Place place{&conversation, side};
    Place& current = logs_[log_].places[std::string(key)];
    if (current.conversation != nullptr && !current.conversation->isLingering)
        Hide(*current.conversation, conversation);
    current = place;
    conversation.keys.emplace_back(log_, key);
    return place;
}

// Whoever connects again with the same ends has lost the record of the older connection's end. But
// several connections that no port and no mark tells apart may be open at once.
void Conversations::Supersede(const Record& record) {
    const Place place = FindKey(KeyOf(record));
    if (place.conversation == nullptr || place.conversation->isLingering) return;
    Tracked& older = *place.conversation;
    if (record.mark == 0 && older.exactKey.empty() && !older.sides[place.side].isAccepted) {
        older.isUncertain = true;
        return;
    }
    older.isForgotten = !older.HasEnded();
    Linger(older, record.time);
}

void Conversations::Await(const Place& place) {
    auto& accepted = logs_[log_].accepted;
    std::erase_if(accepted, [](const Place& other) { return !IsFresh(other); });
    place.conversation->isFresh[place.side] = true;
    accepted.push_back(place);
}

}  // namespace VelSockTrace
