// The calls on files that the floor makes, looked at and changed on their way to the system. They
// are defined anew in this program, which comes before the C library.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

namespace Conformance {

// A call that is about to be made.
struct FileCall {
    std::string_view name;  // open, openat, openat2, read, write, readdir
    std::size_t bytes = 0;  // of read and write; what is left here is asked for
    int error = 0;          // with an error it is not made, but fails with that
};

// While it lives, each such call of the calling thread is shown to the watcher first.
class WatchedFileCalls {
public:
    using Watcher = std::function<void(FileCall&)>;

    explicit WatchedFileCalls(Watcher watcher);
    ~WatchedFileCalls();
    WatchedFileCalls(const WatchedFileCalls&) = delete;
    WatchedFileCalls& operator=(const WatchedFileCalls&) = delete;

private:
    const Watcher watcher_;
};

}  // namespace Conformance
