// Limits how fast bytes are sent.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

namespace VelSockCat {

// Used by one thread.
class Pace {
public:
    // In bytes per second; as fast as possible without a rate.
    explicit Pace(const std::optional<unsigned int>& rate) : rate_(rate) {}

    // How many bytes to send at once: what passes in a tenth of a second, at least one.
    std::size_t Portion(std::size_t available) const noexcept;

    // Waits until so many bytes may be sent.
    void Await(std::size_t bytes);

private:
    using Clock = std::chrono::steady_clock;

    const std::optional<unsigned int> rate_;
    Clock::time_point next_ = Clock::now();
};

}  // namespace VelSockCat
