#include "Playback.h"

#include <utility>

namespace VelSockTrace {

namespace {

bool HasAllData(const LoggedFlow& logged, const Flow& flow) noexcept {
    return logged.withData.transfers > 0 && logged.withData.bytes == flow.Bytes();
}

bool HasData(const Flow& flow) noexcept {
    return flow.logged[0].withData.transfers + flow.logged[1].withData.transfers > 0;
}

}  // namespace

Playback::State::State(const Conversation& summary) : conversation(&summary) {
    for (const std::size_t from : {0U, 1U}) {
        for (const std::size_t side : {0U, 1U})
            told[from][side].source = SourceOf(summary, from, side);
    }
}

Playback::Source Playback::SourceOf(const Conversation& conversation, std::size_t from,
                                    std::size_t side) {
    const Flow& flow = conversation.flows[from];
    if (conversation.isDatagrams) return DatagramSource(flow, from, side);
    if (HasAllData(flow.logged[side], flow)) return Source::WithData;
    if (HasAllData(flow.logged[1 - side], flow)) return Source::Neither;
    return HasData(flow) ? Source::Both : Source::Plain;
}

Playback::Source Playback::DatagramSource(const Flow& flow, std::size_t from, std::size_t side) {
    const LoggedFlow& own = flow.logged[side];
    const std::uint64_t others = flow.logged[1 - side].Transfers();
    const bool isChosen = own.Transfers() > others || (own.Transfers() == others && side == from);
    if (!isChosen) return Source::Neither;
    if (own.withData.transfers == 0) return Source::Plain;
    return own.withData.transfers == own.Transfers() ? Source::WithData : Source::Both;
}

Playback::State* Playback::Find(const Conversation& conversation) {
    const auto found = states_.find(conversation.number);
    return found == states_.end() ? nullptr : &found->second;
}

void Playback::Began(const Conversation& conversation) {
    const auto found = wanted_.find(conversation.number);
    if (found == wanted_.end()) return;
    states_.emplace(conversation.number, State(found->second));
    player_.Begins(found->second, conversation.start);
}

void Playback::Connected(const Conversation& conversation, std::size_t, const Record& record) {
    State* const state = Find(conversation);
    if (state == nullptr || std::exchange(state->hasConnected, true)) return;
    player_.Connects(*state->conversation, record.time);
}

void Playback::Transferred(const Conversation& conversation, std::size_t side,
                           const Record& record) {
    State* const state = Find(conversation);
    if (state == nullptr) return;
    const std::size_t from = IsSending(record.kind) ? side : 1 - side;
    Take(*state, state->told[from][side],
         {record.time, from, record.length, record.hasData, record.data, 0});
}

void Playback::Take(State& state, Told& told, const Piece& piece) {
    if (told.source == Source::Neither) return;
    if (told.source != Source::Both) {
        if (piece.hasData == (told.source == Source::WithData)) Tell(state, told, piece);
        return;
    }
    const bool isPair = piece.hasData && told.isWaiting && told.waiting.length == piece.length;
    if (std::exchange(told.isWaiting, false) && !isPair) Tell(state, told, told.waiting);
    if (piece.hasData) return Tell(state, told, piece);
    told.waiting = piece;
    told.isWaiting = true;
}

// Of a stream, only what the other side's records have not told yet.
void Playback::Tell(State& state, Told& told, Piece piece) {
    if (!state.conversation->isDatagrams) {
        std::uint64_t& sent = state.sent[piece.from];
        told.bytes += piece.length;
        if (told.bytes <= sent) return;
        const std::uint64_t fresh = told.bytes - sent;
        piece.skipped = piece.length > fresh ? piece.length - fresh : 0;
        piece.length -= piece.skipped;
        // What neither side's records have is left out.
        sent += piece.length;
        told.bytes = sent;
    }
    player_.Sends(*state.conversation, piece);
}

void Playback::TellWaiting(State& state, std::size_t side) {
    for (const std::size_t from : {0U, 1U}) {
        Told& told = state.told[from][side];
        if (std::exchange(told.isWaiting, false)) Tell(state, told, told.waiting);
    }
}

void Playback::Failed(const Conversation& conversation, std::size_t side, const Record& record,
                      const FailureRecord& failure) {
    State* const state = Find(conversation);
    if (state == nullptr) return;
    TellWaiting(*state, side);
    if (failure.isEnd) return Close(*state, 1 - side, record.time);
    player_.Fails(*state->conversation, side, record, failure);
}

void Playback::Disconnected(const Conversation& conversation, std::size_t side,
                            const Record& record) {
    State* const state = Find(conversation);
    if (state == nullptr) return;
    // It is the listening socket's if the connection's own records lack the ends.
    if (state->conversation->sides[side].isAccepted && !IsNameless(record)) return;
    TellWaiting(*state, side);
    Close(*state, side, record.time);
}

void Playback::Close(State& state, std::size_t end, std::int64_t time) {
    if (!std::exchange(state.hasClosed[end], true)) player_.Closes(*state.conversation, end, time);
}

void Playback::Forgotten(const Conversation& conversation) {
    State* const state = Find(conversation);
    if (state == nullptr) return;
    for (const std::size_t side : {0U, 1U})
        TellWaiting(*state, side);
    player_.IsOver(*state->conversation);
    states_.erase(conversation.number);
}

}  // namespace VelSockTrace
