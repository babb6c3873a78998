// Appends lines to a file of which any write may end early.
#pragma once

#include "System.h"
#include "VelLogging/Format.h"

#include <string>

namespace VelLogging {

// The record as a line of the calling thread. Behind a line that was cut it begins with a line
// feed.
inline std::string LineOf(const VelLog::LogRecord& record, Format format, bool isCut = false) {
    std::string line(isCut ? "\n" : "");
    AppendLine(line, format, record, CurrentWriter());
    return line;
}

struct Appended {
    std::size_t bytes;
    bool isWhole;
};

// Updates whether the file ends within a line.
inline Appended Append(System::File file, const std::string& line, bool& isCut) noexcept {
    const std::size_t written = System::Write(file, line);
    if (written > 0) isCut = line[written - 1] != '\n';
    return {written, written == line.size()};
}

}  // namespace VelLogging
