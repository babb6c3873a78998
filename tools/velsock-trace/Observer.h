// Who is told what the records say about conversations.
#pragma once

#include <cstddef>
#include <string_view>

#include "Conversation.h"
#include "FailureRecord.h"
#include "Record.h"

namespace VelSockTrace {

// The side is the one whose log has the record. Each conversation is forgotten at last, and told
// nothing of afterwards; until then it keeps its place in memory.
class Observer {
public:
    Observer() = default;
    Observer(const Observer&) = delete;
    Observer& operator=(const Observer&) = delete;
    virtual ~Observer() = default;

    virtual void Began(const Conversation&) {}
    virtual void Connected(const Conversation&, std::size_t /*side*/, const Record&) {}
    virtual void Transferred(const Conversation&, std::size_t /*side*/, const Record&) {}
    virtual void Failed(const Conversation&, std::size_t /*side*/, const Record&,
                        const FailureRecord&) {}
    virtual void Disconnected(const Conversation&, std::size_t /*side*/, const Record&) {}
    virtual void Forgotten(const Conversation&) {}
    // The conversation of the second number turned out to be the other end of that of the first; it
    // is not told of any more.
    virtual void Joined(unsigned int /*number*/, unsigned int /*otherEnd*/) {}
};

}  // namespace VelSockTrace
