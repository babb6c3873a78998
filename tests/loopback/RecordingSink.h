// Keeps the library's log records for a test to compare.
#pragma once

#include <VelLog/LogSink.h>

#include <iosfwd>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace Loopback {

struct Record {
    std::string category;
    std::u16string text;

    bool operator==(const Record&) const = default;
};
void PrintTo(const Record& record, std::ostream* stream);

using Records = std::vector<Record>;

// May be written to and read by several threads. A record of another router than "Network" fails
// the test.
class RecordingSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override;

    // All records in order; they are forgotten.
    Records Take();

    // The records that were written on one thread, in order; nothing is forgotten.
    Records WrittenBy(std::thread::id thread) const;

private:
    struct Entry {
        Record record;
        std::thread::id thread;
    };

    mutable std::mutex mutex_;
    std::vector<Entry> entries_;
};

}  // namespace Loopback
