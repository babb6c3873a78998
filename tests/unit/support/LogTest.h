// What tests of the log have in common.
#pragma once

#include <VelLog/LogControl.h>
#include <VelLog/LogMessage.h>

#include <string>
#include <vector>

#include "scripted/ScriptedPlatform.h"

namespace Support {

// Keeps what it is given.
class RecordingSink : public VelLog::LogSink {
public:
    struct Record {
        std::string router;
        std::string category;
        std::u16string text;
        long long microsecondsSince1970;
        unsigned long long connection;
    };

    void Write(const VelLog::LogRecord& record) override {
        records_.push_back({record.router, record.category, Scripted::Text(record.text),
                            record.microsecondsSince1970, record.connection});
    }

    const std::vector<Record>& Records() const { return records_; }

    std::vector<std::u16string> Texts() const {
        std::vector<std::u16string> texts;
        for (const Record& record : records_)
            texts.push_back(record.text);
        return texts;
    }

private:
    std::vector<Record> records_;
};

// Sets a sink for the rest of the scope and nothing afterwards.
class SinkScope {
public:
    explicit SinkScope(VelLog::LogSink& sink) { VelLog::SetSink(&sink); }
    ~SinkScope() { VelLog::SetSink(nullptr); }
    SinkScope(const SinkScope&) = delete;
    SinkScope& operator=(const SinkScope&) = delete;
};

// Feeds a narrow text and writes it as a record with the format.
inline void Log(VelLog::Router& router, const char* text, const char* format = "%1") {
    VelLog::LogMessage(router, format, VelLog::GetMessageFormatter().AddNarrowText(text), "\"%1\"",
                       nullptr, nullptr, 0);
}

}  // namespace Support
