// What the tests ask the system about threads.
#pragma once

namespace Support {

unsigned long CurrentThread();
// Waits until the thread waits in the system, or has ended. Throws std::runtime_error if neither
// comes within a minute.
void AwaitWaiting(unsigned long thread);

}  // namespace Support
