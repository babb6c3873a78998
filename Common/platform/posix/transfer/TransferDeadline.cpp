#include "transfer/TransferDeadline.h"

#include "sockets/MergedQueue.h"
#include "system/Waiting.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>

namespace Posix {

constexpr Direction Receiving = {Flag::ReceiveTimeout, SO_RCVTIMEO, POLLIN};
constexpr Direction Sending = {Flag::SendTimeout, SO_SNDTIMEO, POLLOUT};

TransferDeadline::TransferDeadline(const Socket& socket, const Direction& direction) noexcept
    : socket_(socket),
      direction_(direction),
      start_(socket.Has(direction.timeoutFlag) ? MonotonicTime() : NotCounting) {}

bool TransferDeadline::AllowsAnother() {
    if ((errno != EINTR && errno != EAGAIN) || !socket_.IsOpen()) return false;
    if (socket_.Has(Flag::NonBlocking)) return errno == EINTR;
    const bool toRead = direction_.readyEvent == POLLIN;
    const int descriptor = toRead ? DescriptorToWatch(socket_) : socket_.descriptor;
    if (!WaitUntilReady(descriptor, direction_.readyEvent, Deadline())) return false;
    // Another thread may have taken what made the socket ready. Only the wait above counts the
    // time, so the attempt must not block.
    attemptFlags_ = MSG_DONTWAIT;
    return true;
}

bool TransferDeadline::AllowsRest() {
    errno = EAGAIN;
    return AllowsAnother();
}

long long TransferDeadline::Deadline() noexcept {
    if (!socket_.Has(direction_.timeoutFlag)) return WithoutLimit;
    // Another thread may have set the timeout during the transfer.
    if (start_ == NotCounting) start_ = MonotonicTime();
    timeval limit = {};
    socklen_t length = sizeof limit;
    ::getsockopt(socket_.descriptor, SOL_SOCKET, direction_.timeoutOption, &limit, &length);
    return start_ + (limit.tv_sec * 1'000'000LL + limit.tv_usec) * 1'000LL;
}

}  // namespace Posix
