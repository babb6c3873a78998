// Records for the tests of sinks.
#pragma once

#include <VelLogging/Sink.h>

#include <string>
#include <utility>
#include <vector>

namespace VelLoggingTests {

// 2026-11-22T13:01:02.123456Z
inline constexpr long long SampleTime = 1'795'352'462'123'456;

// A record with strings of its own.
class SampleRecord {
public:
    explicit SampleRecord(std::u16string_view text, unsigned long long connection = 0,
                          const char* category = "Packet Trace", long long time = SampleTime)
        : units_(text.begin(), text.end()),
          category_(category),
          time_(time),
          connection_(connection) {
        units_.push_back(0);
    }

    // NOLINTNEXTLINE(google-explicit-constructor): it stands for a record.
    operator VelLog::LogRecord() const {
        return {"Network", category_, units_.data(), time_, connection_};
    }

private:
    std::vector<unsigned short> units_;
    const char* category_;
    long long time_;
    unsigned long long connection_;
};

// Without the lines' heads: what follows the first ": ".
inline std::string TextsOf(const std::string& lines) {
    std::string texts;
    for (std::size_t begin = 0; begin < lines.size();) {
        const std::size_t end = lines.find('\n', begin);
        const std::string line = lines.substr(begin, end - begin);
        const std::size_t head = line.find(": ");
        texts += (head == std::string::npos ? line : line.substr(head + 2)) + '|';
        begin = end == std::string::npos ? lines.size() : end + 1;
    }
    return texts;
}

}  // namespace VelLoggingTests
