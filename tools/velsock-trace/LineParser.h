// A line of a log as a record.
#pragma once

#include <string>
#include <string_view>

#include "Record.h"
#include "TimeText.h"

namespace VelSockTrace {

enum class LineKind {
    Record,
    Foreign,  // not a line of this library's log
    Broken,   // one, but its text is not whole or not what the library writes
};

// Reads lines of all forms, which may be mixed. One parser for each file; not for several threads.
class LineParser {
public:
    // The line lacks its line feed. What the record points to lives until the next call, or as long
    // as the line if that is shorter.
    LineKind Parse(std::string_view line, Record& record);

private:
    TimeReader times_;
    std::string scratch_;
};

}  // namespace VelSockTrace
