// The records of several log files in the order of their times.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "LineParser.h"
#include "LineSplitter.h"
#include "LogFile.h"

namespace VelSockTrace {

// Lines that are not whole records, counted, and the first of each kind.
struct Fault {
    std::uint64_t count = 0;
    struct Example {
        std::string path;
        std::uint64_t line;
        std::string text;  // printable
    };
    std::vector<Example> examples;
};

struct Faults {
    Fault foreign;
    Fault broken;
    Fault damaged;  // records that lack a part of their data
    Fault cut;      // lines above the limit
};

// Each file is in the order in which it was written; among files the record with the earliest time
// comes first. Files whose names differ by a number at the end alone ("app.log.1") are one log.
class Logs {
public:
    struct Next {
        const Record* record = nullptr;  // null if there is none at present
        std::size_t log = 0;
    };

    // Throws Failure with LocalFailure, as Take does.
    Logs(const std::vector<std::string>& paths, bool isFollowed);

    // Returns the next record, which is valid until the next call.
    Next Take();

    const Faults& FaultsSoFar() const noexcept { return faults_; }
    std::uint64_t Consumed() const noexcept;
    std::uint64_t Size() const;

private:
    struct Source {
        Source(const std::string& pathOfFile, std::size_t index, bool isFollowed);

        std::string path;
        std::size_t log;
        LogFile file;
        LineSplitter splitter;
        LineParser parser;
        Record record;
        bool hasRecord = false;
        std::uint64_t lines = 0;
    };

    bool Fill(Source& source);
    std::optional<Line> TakeLine(Source& source) const;
    bool Keep(Source& source, const Line& line);
    void Note(Fault& fault, const Source& source, std::string_view line);

    bool isFollowed_;
    std::deque<Source> sources_;
    Source* taken_ = nullptr;
    Faults faults_;
};

}  // namespace VelSockTrace
