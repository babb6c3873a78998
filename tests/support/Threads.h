// What the tests ask the system about threads.
#pragma once

namespace Support {

unsigned long CurrentThread();
// Waits until the thread waits in the system.
void AwaitWaiting(unsigned long thread);

}  // namespace Support
