#include <gtest/gtest.h>
#include <loopback/RecordingSink.h>
#include <support/Text.h>

#include <ostream>
#include <utility>

namespace Loopback {

void PrintTo(const Record& record, std::ostream* stream) {
    *stream << record.category << ": " << testing::PrintToString(record.text);
}

void RecordingSink::Write(const VelLog::LogRecord& record) {
    EXPECT_STREQ(record.router, "Network");
    Entry entry{{record.category, Support::Text(record.text)}, std::this_thread::get_id()};
    const std::lock_guard lock(mutex_);
    entries_.push_back(std::move(entry));
}

Records RecordingSink::Take() {
    const std::lock_guard lock(mutex_);
    Records taken;
    for (const Entry& entry : std::exchange(entries_, {})) {
        taken.push_back(entry.record);
    }
    return taken;
}

Records RecordingSink::WrittenBy(std::thread::id thread) const {
    const std::lock_guard lock(mutex_);
    Records found;
    for (const Entry& entry : entries_) {
        if (entry.thread == thread) found.push_back(entry.record);
    }
    return found;
}

}  // namespace Loopback
