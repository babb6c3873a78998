// A process without standard streams, as daemons are.
#pragma once

#include <fcntl.h>
#include <unistd.h>

namespace Conformance {

// Closes them for its lifetime. Nothing may be reported meanwhile.
class ClosedStandardStreams {
public:
    ClosedStandardStreams() noexcept {
        for (int stream = 0; stream < Count; ++stream) {
            kept_[stream] = ::fcntl(stream, F_DUPFD_CLOEXEC, Count);
            ::close(stream);
        }
    }
    ~ClosedStandardStreams() {
        for (int stream = 0; stream < Count; ++stream) {
            if (kept_[stream] < 0) continue;
            ::dup2(kept_[stream], stream);
            ::close(kept_[stream]);
        }
    }
    ClosedStandardStreams(const ClosedStandardStreams&) = delete;
    ClosedStandardStreams& operator=(const ClosedStandardStreams&) = delete;

    // How many of the streams' numbers are in use.
    static int InUse() noexcept {
        int used = 0;
        for (int stream = 0; stream < Count; ++stream) {
            if (::fcntl(stream, F_GETFD) >= 0) ++used;
        }
        return used;
    }

private:
    static constexpr int Count = 3;
    int kept_[Count];
};

}  // namespace Conformance
