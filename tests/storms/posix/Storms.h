// Work of the library under conditions that a test seldom meets: thousands of signals a second, and
// dozens of threads that start and end the layer, or use it while its log is switched.
//
// Each storm is bounded: what hangs ends the program, by the clock's signal. What is wrong is told
// as a text.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "support/posix/SignalStorm.h"

namespace Storms {

struct Totals {
    std::size_t cases = 0;
    std::size_t bytes = 0;
    std::size_t startUps = 0;
    std::size_t failedStartUps = 0;
    std::size_t threads = 0;
    unsigned long long signals = 0;
    std::vector<std::string> failures = {};

    void Add(const Totals& more);
};

std::string LineOf(const Totals& totals);

using Signals = Support::SignalStorm::Kind;

// Streams in one direction, plain and with timeouts; datagrams to and fro; new connections. Both
// threads get the signals. What arrives must be what was sent.
Totals TransfersUnderSignals(const Signals& signals, std::size_t bytes);

// Waits that nothing ends: to receive, to send, for a set of sockets. Each lasts for as long as its
// timeout, and not much longer. What waits still after the patience is ended.
Totals WaitsUnderSignals(const Signals& signals, std::chrono::seconds patience);

// Start-ups and clean-ups, with memory failing in some, and sockets between them. Afterwards the
// layer is down and comes up again.
Totals StartUpsInThreads(std::size_t threads, std::size_t startUps);

// Sockets of all kinds, names and log records in so many threads while another one switches routers
// and sinks. Afterwards the process has the descriptors that it had before.
Totals SwitchedLogs(std::size_t threads, std::size_t steps);

// Lets the clock end the program if the work takes too long.
class Bounded {
public:
    explicit Bounded(unsigned int seconds);
    ~Bounded();
    Bounded(const Bounded&) = delete;
    Bounded& operator=(const Bounded&) = delete;
};

// The current exception as a text: one of the library's, or another.
std::string TextOfException();

}  // namespace Storms
