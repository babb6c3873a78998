// Descriptors without surprises.
#pragma once

#include <pthread.h>

#include <utility>

namespace Posix {

// Keeps a request to cancel the calling thread waiting, for what must be done as a whole.
class CancellationGuard {
public:
    CancellationGuard() noexcept { ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state_); }
    ~CancellationGuard() { ::pthread_setcancelstate(state_, nullptr); }
    CancellationGuard(const CancellationGuard&) = delete;
    CancellationGuard& operator=(const CancellationGuard&) = delete;

private:
    int state_ = 0;
};

// The kernel frees the descriptor whatever it answers, so closing is never repeated and cannot
// fail. Keeps errno.
void CloseDescriptor(int descriptor) noexcept;

// The owner of a descriptor.
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

// What the kernel has to tell of a socket, an unfinished connect or the end of a connection, as an
// error number of the system; 0 for nothing. It tells each once.
int TakePendingError(int descriptor) noexcept;

// A process whose standard streams are closed gets their numbers for what it opens next, and then
// whatever it reports on standard error would go there. Takes a descriptor that was just made and
// returns one above those numbers; negative with errno when there is none left, or none was made.
int MoveAboveStandardStreams(int descriptor) noexcept;

}  // namespace Posix
