#include "Pace.h"

#include <algorithm>
#include <thread>

namespace VelSockCat {

std::size_t Pace::Portion(std::size_t available) const noexcept {
    if (!rate_) return available;
    const std::size_t portion = std::max<std::size_t>(*rate_ / 10, 1);
    return std::min(available, portion);
}

// What a pause of the input has left unused is not made up for.
void Pace::Await(std::size_t bytes) {
    if (!rate_) return;
    const std::chrono::duration<double> time(static_cast<double>(bytes) / *rate_);
    std::this_thread::sleep_until(next_);
    next_ = std::max(next_, Clock::now()) + std::chrono::duration_cast<Clock::duration>(time);
}

}  // namespace VelSockCat
