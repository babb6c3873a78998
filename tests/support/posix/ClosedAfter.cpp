#include "support/posix/ClosedAfter.h"

#include <VelNet/Exception.h>

#include <condition_variable>
#include <mutex>
#include <stop_token>

namespace Support {

namespace {

// Returns false if it is to stop before.
bool TimePasses(const std::stop_token& stop, std::chrono::seconds time) {
    std::mutex lock;
    std::unique_lock<std::mutex> guard(lock);
    std::condition_variable_any stopped;
    return !stopped.wait_for(guard, stop, time, [&] { return stop.stop_requested(); });
}

}  // namespace

ClosedAfter::ClosedAfter(VelNet::Socket& socket, std::chrono::seconds time)
    : thread_([&socket, time](const std::stop_token& stop) {
          if (!TimePasses(stop, time)) return;
          try {
              socket.Close();
          } catch (const VelNet::Exception&) {
              return;  // closed before
          }
      }) {}

}  // namespace Support
