// Plays conversations again, with each byte once, although the records of both sides, and plain
// records and those with data, tell of the same transfers.
//
// Of a stream, what an end has sent is told as soon as either side's records have it, so that a
// request comes before its answer whichever log was written first. If the records of one side alone
// have all the bytes, only these count. Of datagrams, which may be lost on their way, those of the
// side count that has recorded more.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string_view>
#include <unordered_map>

#include "Observer.h"

namespace VelSockTrace {

// What one end has sent at once, or a part of it.
struct Piece {
    std::int64_t time = 0;
    std::size_t from = 0;  // the end
    std::uint64_t length = 0;
    bool hasData = false;
    std::string_view digits;    // the bytes in the records' form, if there are any
    std::uint64_t skipped = 0;  // of them, so many precede the piece
};

// Who is told. A conversation is given with all that is known of it at its end.
class Player {
public:
    Player() = default;
    Player(const Player&) = delete;
    Player& operator=(const Player&) = delete;
    virtual ~Player() = default;

    virtual void Begins(const Conversation&, std::int64_t /*time*/) {}
    // Once, with the first of its sides.
    virtual void Connects(const Conversation&, std::int64_t /*time*/) {}
    virtual void Sends(const Conversation&, const Piece&) {}
    virtual void Fails(const Conversation&, std::size_t /*end*/, const Record&,
                       const FailureRecord&) {}
    // An end has closed, or ended its direction; once for each.
    virtual void Closes(const Conversation&, std::size_t /*end*/, std::int64_t /*time*/) {}
    virtual void IsOver(const Conversation&) {}
};

class Playback : public Observer {
public:
    // Plays those of the conversations.
    Playback(const std::map<unsigned int, Conversation>& wanted, Player& player)
        : wanted_(wanted), player_(player) {}

    void Began(const Conversation& conversation) override;
    void Connected(const Conversation& conversation, std::size_t side,
                   const Record& record) override;
    void Transferred(const Conversation& conversation, std::size_t side,
                     const Record& record) override;
    void Failed(const Conversation& conversation, std::size_t side, const Record& record,
                const FailureRecord& failure) override;
    void Disconnected(const Conversation& conversation, std::size_t side,
                      const Record& record) override;
    void Forgotten(const Conversation& conversation) override;

private:
    enum class Source { Neither, Plain, WithData, Both };
    // What one side's records have told of what one end has sent.
    struct Told {
        Source source = Source::Neither;
        std::uint64_t bytes = 0;
        bool isWaiting = false;  // a plain record, for the one with data
        Piece waiting;
    };
    struct State {
        explicit State(const Conversation& summary);

        const Conversation* conversation;
        bool hasConnected = false;
        std::array<bool, 2> hasClosed{};
        std::array<std::uint64_t, 2> sent{};      // by each end
        std::array<std::array<Told, 2>, 2> told;  // by end and side
    };

    static Source SourceOf(const Conversation& conversation, std::size_t from, std::size_t side);
    static Source DatagramSource(const Flow& flow, std::size_t from, std::size_t side);
    State* Find(const Conversation& conversation);
    void Take(State& state, Told& told, const Piece& piece);
    void Tell(State& state, Told& told, Piece piece);
    void TellWaiting(State& state, std::size_t side);
    void Close(State& state, std::size_t end, std::int64_t time);

    const std::map<unsigned int, Conversation>& wanted_;
    Player& player_;
    std::unordered_map<unsigned int, State> states_;
};

}  // namespace VelSockTrace
