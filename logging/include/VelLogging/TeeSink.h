// A sink that passes each record to several others.
#pragma once

#include <VelLogging/Sink.h>

#include <memory>
#include <vector>

namespace VelLogging {

// Passes each record to all of its sinks, in their order. One that throws keeps the others from
// nothing; that is counted as lost.
class TeeSink final : public Sink {
public:
    // Owns the sinks from now on; none of them is null.
    explicit TeeSink(std::vector<std::unique_ptr<Sink>> sinks) noexcept;

    void Write(const VelLog::LogRecord& record) override;
    void Reopen() noexcept override;
    // Of all its sinks together.
    unsigned long long Lost() const noexcept override;

private:
    const std::vector<std::unique_ptr<Sink>> sinks_;
};

}  // namespace VelLogging
