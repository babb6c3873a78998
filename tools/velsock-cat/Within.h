// Limits what nothing can interrupt: a look-up in the system's resolver.
#pragma once

#include <VelCompanion/Waiting.h>

#include <future>
#include <optional>
#include <thread>
#include <utility>

namespace VelSockCat {

// Returns what the work returns, or nothing if the time is over before; throws what it throws. Work
// that is late goes on in a thread of its own, at most until the process ends: so it must own what
// it uses.
template <class Work>
auto Within(const VelCompanion::Deadline& deadline, Work work) -> std::optional<decltype(work())> {
    if (!deadline.HasLimit()) return work();
    std::packaged_task<decltype(work())()> task(std::move(work));
    auto result = task.get_future();
    std::thread(std::move(task)).detach();
    if (result.wait_for(deadline.Left()) != std::future_status::ready) return {};
    return result.get();
}

}  // namespace VelSockCat
