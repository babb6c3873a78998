// Owns and closes descriptors.
#pragma once

#include <pthread.h>

#include <utility>

namespace Posix {

// Defers cancellation of the calling thread during an operation that must not be left half done.
class CancellationGuard {
public:
    CancellationGuard() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state_); }
    ~CancellationGuard() { ::pthread_setcancelstate(state_, nullptr); }
    CancellationGuard(const CancellationGuard&) = delete;
    CancellationGuard& operator=(const CancellationGuard&) = delete;

private:
    int state_ = 0;
};

// Linux frees the descriptor even if close returns an error, so the error is ignored and close
// never repeated. Preserves errno.
void CloseDescriptor(int descriptor) noexcept;

// Owns a descriptor.
class Descriptor {
public:
    Descriptor() noexcept = default;
    explicit Descriptor(int number) noexcept : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~Descriptor() {
        if (number_ >= 0) CloseDescriptor(number_);
    }
    explicit operator bool() const noexcept { return number_ >= 0; }
    int Number() const noexcept { return number_; }
    int Take() noexcept { return std::exchange(number_, -1); }

private:
    int number_ = -1;
};

// Returns and clears the socket's pending error (SO_ERROR), from an unfinished connect or the end
// of a connection, as a system error number; 0 if there is none. The kernel reports each once.
int TakePendingError(int descriptor) noexcept;

// If a process has closed its standard streams, the next descriptors it opens get their numbers,
// and whatever it then writes to standard error would end up there. Takes a new descriptor and
// returns it, moved above these numbers if it is one of them; negative with errno if it cannot be
// moved. A negative one is returned as it is.
int MoveAboveStandardStreams(int descriptor) noexcept;

}  // namespace Posix
