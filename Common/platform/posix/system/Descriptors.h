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

// The kernel frees the descriptor even if close fails, so that closing is never repeated and cannot
// fail. Preserves errno.
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
// returns one above these numbers; negative with errno if there is none, or if the new one is
// negative.
int MoveAboveStandardStreams(int descriptor) noexcept;

}  // namespace Posix
