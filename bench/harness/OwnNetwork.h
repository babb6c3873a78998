// A network that is the same on every machine.
#pragma once

namespace Bench {

// Moves the process into a network of its own, which has the loopback interface and IPv4 alone: an
// extended socket is made for an address of this machine, and what one costs depends on whether
// that is an IPv6 address. Where the system does not allow it, says so and leaves the process where
// it is. To be called while there is one thread.
void EnterOwnNetwork();

}  // namespace Bench
