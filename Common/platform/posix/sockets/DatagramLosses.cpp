#include "sockets/DatagramLosses.h"

#include "errors/WinsockError.h"

#include <atomic>
#include <cstdint>
#include <limits>

namespace Posix {

namespace {

// Trivial, like the socket table's entries: no compiler has to construct a million of them.
struct Losses {
    std::uint16_t unreachable;
    std::uint16_t tooManyHops;
};

// Not in the socket table: transfers of streams find their entries faster in a table of small ones.
constinit Losses lossTable[SocketTableSize] = {};

Losses& LossesOf(const Socket& socket) noexcept {
    return lossTable[socket.descriptor];
}

using Count = std::atomic_ref<std::uint16_t>;

bool TakeOne(Count count) noexcept {
    std::uint16_t known = count.load(std::memory_order_relaxed);
    while (known > 0 && !count.compare_exchange_weak(known, static_cast<std::uint16_t>(known - 1),
                                                     std::memory_order_relaxed)) {
    }
    return known > 0;
}

}  // namespace

void AddLoss(const Socket& socket, Loss loss) noexcept {
    Losses& losses = LossesOf(socket);
    const Count count(loss == Loss::TooManyHops ? losses.tooManyHops : losses.unreachable);
    std::uint16_t known = count.load(std::memory_order_relaxed);
    while (known < std::numeric_limits<std::uint16_t>::max() &&
           !count.compare_exchange_weak(known, static_cast<std::uint16_t>(known + 1),
                                        std::memory_order_relaxed)) {
    }
}

WinsockError TakeLoss(const Socket& socket) noexcept {
    Losses& losses = LossesOf(socket);
    if (TakeOne(Count(losses.unreachable))) return WinsockError::ConnectionReset;
    return TakeOne(Count(losses.tooManyHops)) ? WinsockError::NetworkReset : WinsockError::None;
}

bool HasLoss(const Socket& socket) noexcept {
    Losses& losses = LossesOf(socket);
    return Count(losses.unreachable).load(std::memory_order_relaxed) > 0 ||
           Count(losses.tooManyHops).load(std::memory_order_relaxed) > 0;
}

void ForgetLosses(int descriptor) noexcept {
    Count(lossTable[descriptor].unreachable).store(0, std::memory_order_relaxed);
    Count(lossTable[descriptor].tooManyHops).store(0, std::memory_order_relaxed);
}

}  // namespace Posix
