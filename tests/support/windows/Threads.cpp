#include "support/Threads.h"

#include <windows.h>

namespace Support {

unsigned long CurrentThread() {
    return GetCurrentThreadId();
}

// The system does not tell whether a thread waits.
void AwaitWaiting(unsigned long) {
    Sleep(500);
}

}  // namespace Support
