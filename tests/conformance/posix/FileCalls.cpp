#include "FileCalls.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <utility>

namespace Conformance {

using namespace SystemCalls;

namespace {

Hook Shown(std::string_view name, const WatchedFileCalls::Watcher& watcher) {
    return [name, &watcher](const Call& call) {
        FileCall shown = {.name = name};
        watcher(shown);
        return shown.error != 0 ? call.Fail(shown.error) : call.Make();
    };
}

// With as many bytes as the watcher leaves.
template <typename Transfer>
Hook ShownTransfer(std::string_view name, const WatchedFileCalls::Watcher& watcher,
                   Transfer transfer) {
    return [name, &watcher, transfer](const Call& call) {
        FileCall shown = {.name = name, .bytes = static_cast<std::size_t>(call.Argument(2))};
        watcher(shown);
        if (shown.error != 0) return call.Fail(shown.error);
        const int file = static_cast<int>(call.Argument(0));
        return Word{transfer(file, call.Pointer<void>(1), shown.bytes)};
    };
}

}  // namespace

WatchedFileCalls::WatchedFileCalls(Watcher watcher)
    : watcher_(std::move(watcher)),
      open_(SystemCall::Open, Shown("open", watcher_)),
      openat_(SystemCall::Openat, Shown("openat", watcher_)),
      openat2_(SystemCall::Syscall, Shown("openat2", watcher_), {.option = SYS_openat2}),
      read_(SystemCall::Read, ShownTransfer("read", watcher_, &::read)),
      write_(SystemCall::Write, ShownTransfer("write", watcher_, &::write)),
      readdir_(SystemCall::Readdir, Shown("readdir", watcher_)) {}

}  // namespace Conformance
