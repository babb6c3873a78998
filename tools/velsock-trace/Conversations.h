// Sorts records into conversations.
//
// A record belongs to the conversation with its mark, or else with its ends. Two sockets of the
// same ends, each the other's remote one, are the two sides of one conversation, whichever logs
// they are in. Sides whose ends the records do not tell in full are joined when both have ended:
// see OtherEnds.
//
// A conversation that has ended lingers until the log is some time ahead, since the other side's
// records may come later; then it is forgotten. So memory depends on how many are open at once, and
// beyond a limit the one is forgotten of which nothing has been heard for longest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>

#include "Observer.h"
#include "OtherEnds.h"
#include "Tracked.h"

namespace VelSockTrace {

struct Limits {
    std::size_t open = 100'000;
    std::size_t lingering = 20'000;
    std::int64_t lingerTime = 10'000'000;  // microseconds
};

// The number of each conversation that was joined to another one, with the other's number.
using Joints = std::unordered_map<unsigned int, unsigned int>;

class Conversations {
public:
    explicit Conversations(Observer& observer, const Limits& limits = {})
        : observer_(observer), limits_(limits) {}

    // For reading the same logs again: the joints that were found then. No others are made.
    Conversations(Observer& observer, const Joints& joints)
        : observer_(observer), joints_(&joints) {}

    // Takes the next record of a log; logs are numbered from 0. Returns whether it belongs to a
    // conversation.
    bool Take(const Record& record, std::size_t log);

    // Forgets those that have ended, or all.
    void Settle();
    void Finish();

private:
    bool Connect(const Record& record);
    bool Transfer(const Record& record);
    bool Disconnect(const Record& record);
    bool Fail(const Record& record);
    void Refuse(const Record& record, const FailureRecord& failure);

    // The key of a record in its log; valid until the next call.
    std::string_view KeyOf(const Record& record);
    Place Find(const Record& record);
    Place FindKey(std::string_view key) const;
    Place FindUnnamed();
    void Adopt(const Place& place);
    Place FindFailed(const Record& record, const FailureRecord& failure);
    Place FindOnly() noexcept;
    Tracked* Mirrored(const Ends& ends) const;

    Place Begin(const Record& record);
    Place Resume(unsigned int number, const Ends& ends, std::string_view key);
    Tracked& Create(const Record& record, const Ends& ends);
    Place Attach(Tracked& conversation, std::size_t side, std::string_view key);
    void Supersede(const Record& record);
    void Hide(Tracked& older, Tracked& newer) noexcept;
    void CountOpen(Tracked& conversation, std::size_t side);
    void CountClosed(Tracked& conversation, std::size_t side);
    void Await(const Place& place);

    void Touch(Tracked& conversation, const Record& record);
    void End(const Place& place, const Record& record);
    void Linger(Tracked& conversation, std::int64_t from);
    void Revive(Tracked& conversation);
    void Reveal(Tracked& conversation);
    void Forget(Tracked& conversation);
    void Join(Tracked& kept, Tracked& other);
    void Erase(Tracked& conversation);
    void EraseKeys(Tracked& conversation);
    void KeepLimits(std::int64_t now);

    Observer& observer_;
    Limits limits_;
    const Joints* joints_ = nullptr;
    std::deque<Log> logs_;
    std::size_t log_ = 0;  // the record at hand is of this one
    unsigned int lastNumber_ = 0;
    TrackedList open_;  // the one that was heard of last is the last
    TrackedList lingering_;
    OtherEnds otherEnds_;
    std::unordered_map<std::string, Tracked*> exact_;
    std::unordered_map<unsigned int, Tracked*> numbers_;  // when reading again
    std::string key_;
};

}  // namespace VelSockTrace
