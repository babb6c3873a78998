// What precedes a record's text in a line of the log, in each of the forms that sinks write.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "TimeText.h"

namespace VelSockTrace {

struct LineHead {
    std::int64_t time = 0;
    std::uint64_t process = 0;
    std::uint64_t mark = 0;
    std::string_view router;
    std::string_view category;
    std::string_view text;
};

// "2026-11-22T13:01:02.123456Z Network/Packet Trace: TEXT", or with "[4711:4712] #17 " after the
// time. Returns whether the line has this form; so do the others.
bool ReadPlainLine(std::string_view line, TimeReader& times, LineHead& head) noexcept;

// time=2026-11-22T13:01:02.123456Z pid=4711 tid=4712 connection=17 router=Network
// category="Packet Trace" text="TEXT". Members may stand in any order; unknown ones are skipped.
// Escapes are resolved in the scratch string. The last value may lack its end: the line was cut.
bool ReadLogfmtLine(std::string_view line, TimeReader& times, std::string& scratch, LineHead& head);

// {"time":"2026-11-22T13:01:02.123456Z","pid":4711,"tid":4712,"connection":17,"router":"Network",
// "category":"Packet Trace","text":"TEXT"}, with the same liberties.
bool ReadJsonLine(std::string_view line, TimeReader& times, std::string& scratch, LineHead& head);

// Removes the prefix from the text; returns false if there is none.
bool Take(std::string_view& text, std::string_view prefix) noexcept;

// Reads a decimal number at the beginning of the text and removes it. Returns false if there is
// none, or it has more than 64 bits.
bool TakeNumber(std::string_view& text, std::uint64_t& number) noexcept;

}  // namespace VelSockTrace
