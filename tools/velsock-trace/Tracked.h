// A conversation with what is needed to find it and to forget it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Conversation.h"

namespace VelSockTrace {

struct Tracked;
using TrackedList = std::list<Tracked>;

struct Tracked : Conversation {
    TrackedList::iterator place;
    bool isLingering = false;      // ended, and not forgotten yet
    std::array<bool, 2> isOpen{};  // which sides their logs count as open streams
    std::int64_t lingersFrom = 0;
    std::array<bool, 2> isFresh{};  // which sides are among their logs' accepted ones
    std::vector<std::pair<std::size_t, std::string>> keys;  // the log, and the key there
    std::string exactKey;                                   // of both ends, if they are exact
    Tracked* hidden = nullptr;                              // an older one that has the same key
    Tracked* hiddenBy = nullptr;
};

struct HashOfText {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
};

// Which conversation the records with a key belong to, and to which side of it.
struct Place {
    Tracked* conversation = nullptr;
    std::size_t side = 0;
};
inline bool IsFresh(const Place& place) noexcept {
    return place.conversation->isFresh[place.side];
}

using Places = std::unordered_map<std::string, Place, HashOfText, std::equal_to<>>;

// One log: the files of one program, one after the other.
struct Log {
    Places places;
    Place unnamed;                // what the records without ends belong to at present
    std::vector<Place> accepted;  // connected, and without a transfer so far
    std::size_t openStreams = 0;
};

}  // namespace VelSockTrace
