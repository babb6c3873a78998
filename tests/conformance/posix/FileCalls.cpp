#include "FileCalls.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <utility>

namespace {

using Conformance::FileCall;
using Conformance::WatchedFileCalls;

constinit thread_local const WatchedFileCalls::Watcher* currentWatcher = nullptr;

// False with errno for a call that is to fail. What the watcher does itself is not watched.
bool MayBeMade(FileCall& call) {
    const WatchedFileCalls::Watcher* const watcher = std::exchange(currentWatcher, nullptr);
    if (watcher == nullptr) return true;
    (*watcher)(call);
    currentWatcher = watcher;
    if (call.error != 0) errno = call.error;
    return call.error == 0;
}

bool HasMode(int flags) {
    return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

// The C library's function of that name.
template <typename Function>
Function* Next(Function*, const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace Conformance {

WatchedFileCalls::WatchedFileCalls(Watcher watcher) : watcher_(std::move(watcher)) {
    currentWatcher = &watcher_;
}

WatchedFileCalls::~WatchedFileCalls() {
    currentWatcher = nullptr;
}

}  // namespace Conformance

extern "C" {

int open(const char* path, int flags, ...) {
    static auto* const next = Next(&::open, "open");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = HasMode(flags) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    FileCall call = {.name = "open"};
    return MayBeMade(call) ? next(path, flags, mode) : -1;
}

int openat(int folder, const char* path, int flags, ...) {
    static auto* const next = Next(&::openat, "openat");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = HasMode(flags) ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    FileCall call = {.name = "openat"};
    return MayBeMade(call) ? next(folder, path, flags, mode) : -1;
}

ssize_t read(int file, void* buffer, size_t count) {
    static auto* const next = Next(&::read, "read");
    FileCall call = {.name = "read", .bytes = count};
    return MayBeMade(call) ? next(file, buffer, call.bytes) : -1;
}

ssize_t write(int file, const void* buffer, size_t count) {
    static auto* const next = Next(&::write, "write");
    FileCall call = {.name = "write", .bytes = count};
    return MayBeMade(call) ? next(file, buffer, call.bytes) : -1;
}

dirent* readdir(DIR* listing) {
    static auto* const next = Next(&::readdir, "readdir");
    FileCall call = {.name = "readdir"};
    return MayBeMade(call) ? next(listing) : nullptr;
}

// For openat2, which the C library has no function for. No other call has more arguments than six.
long syscall(long number, ...) noexcept {
    static auto* const next = Next(&::syscall, "syscall");
    std::va_list list;
    va_start(list, number);
    long arguments[6];
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    FileCall call = {.name = "openat2"};
    if (number == SYS_openat2 && !MayBeMade(call)) return -1;
    return next(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                arguments[5]);
}

}  // extern "C"
