#include "Socket/OwnSocket.h"

namespace VelNet {

namespace {

constinit std::atomic<unsigned int> g_connectionCount = 0;

// Never 0, not even when the count begins again.
unsigned int NextConnectionNumber() noexcept {
    const unsigned int number = ++g_connectionCount;
    return number != 0 ? number : ++g_connectionCount;
}

}  // namespace

// One thread may send while another receives: the first of them decides.
unsigned int OwnSocket::TakeConnectionNumber() const noexcept {
    const unsigned int taken = NextConnectionNumber();
    unsigned int earlier = 0;
    return connectionNumber_.compare_exchange_strong(earlier, taken) ? taken : earlier;
}

}  // namespace VelNet
