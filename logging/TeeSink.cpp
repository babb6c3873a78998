#include "VelLogging/TeeSink.h"

#include <utility>

namespace VelLogging {

TeeSink::TeeSink(std::vector<std::unique_ptr<Sink>> sinks) noexcept : sinks_(std::move(sinks)) {}

void TeeSink::Write(const VelLog::LogRecord& record) {
    for (const auto& sink : sinks_) {
        try {
            sink->Write(record);
        } catch (...) {
            CountLost();
        }
    }
}

void TeeSink::Reopen() noexcept {
    for (const auto& sink : sinks_)
        sink->Reopen();
}

unsigned long long TeeSink::Lost() const noexcept {
    unsigned long long lost = Sink::Lost();
    for (const auto& sink : sinks_)
        lost += sink->Lost();
    return lost;
}

}  // namespace VelLogging
