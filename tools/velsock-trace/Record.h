// One record of the library's log, as read from a line.
#pragma once

#include <cstdint>
#include <string_view>

namespace VelSockTrace {

enum class RecordKind : unsigned char {
    Connected,
    Disconnected,
    Sent,
    Received,
    SentTo,
    ReceivedFrom,
    Failure,
    Other,  // one that tells nothing about conversations
};

// The views point into the line, or into what was made of its escapes; see LineParser.
struct Record {
    std::int64_t time = 0;  // microseconds since 1970, UTC
    RecordKind kind = RecordKind::Other;
    bool hasData = false;    // of a transfer
    bool isDamaged = false;  // some of its data is missing
    std::uint32_t length = 0;
    std::uint64_t process = 0;  // 0 if the line does not tell
    std::uint64_t mark = 0;     // the connection's; 0 if there is none
    std::string_view ends;      // "127.0.0.1 (4000), Remote address: 127.0.0.1 (40123)"
    std::string_view data;      // in the records' hexadecimal form
    std::string_view text;      // the whole text
};

inline bool IsTransfer(RecordKind kind) noexcept {
    return kind >= RecordKind::Sent && kind <= RecordKind::ReceivedFrom;
}

inline bool IsDatagram(RecordKind kind) noexcept {
    return kind == RecordKind::SentTo || kind == RecordKind::ReceivedFrom;
}

inline bool IsSending(RecordKind kind) noexcept {
    return kind == RecordKind::Sent || kind == RecordKind::SentTo;
}

// An extended socket that was accepted does not know its ends.
inline bool IsNameless(const Record& record) noexcept {
    return record.mark == 0 && record.ends == " (), Remote address:  ()" &&
           !IsDatagram(record.kind);
}

}  // namespace VelSockTrace
