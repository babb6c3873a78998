// On whose behalf a thread writes.
#pragma once

namespace VelLogging {

// Within the scope the records that this thread writes are those of another one.
class WriterScope {
public:
    explicit WriterScope(unsigned long long thread) noexcept;
    ~WriterScope();
    WriterScope(const WriterScope&) = delete;
    WriterScope& operator=(const WriterScope&) = delete;
};

}  // namespace VelLogging
