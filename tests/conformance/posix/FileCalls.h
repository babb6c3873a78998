// The calls on files that the floor makes, looked at and changed on their way to the system,
// whatever their kind.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

#include "support/posix/SystemCallFaults.h"

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

private:
    const Watcher watcher_;
    const SystemCalls::HookedCall open_;
    const SystemCalls::HookedCall openat_;
    const SystemCalls::HookedCall openat2_;
    const SystemCalls::HookedCall read_;
    const SystemCalls::HookedCall write_;
    const SystemCalls::HookedCall readdir_;
};

}  // namespace Conformance
