// What passes over one connection, or over a socket for datagrams: counted, and shown on request.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "Arguments.h"
#include "Events.h"
#include "HexDump.h"

namespace VelSockCat {

struct Totals {
    unsigned long long sent = 0;
    unsigned long long received = 0;
    std::chrono::duration<double> lasted{0};
    std::optional<std::chrono::duration<double>> connecting;  // if this side has connected
    std::optional<std::chrono::duration<double>> firstByte;   // from the beginning to the peer's
};

// Used by the thread that sends and by the one that receives at the same time.
class Traffic {
public:
    // The number tells the connections of one server apart; 0 for one that is alone.
    explicit Traffic(const Arguments& arguments, int number = 0);

    // Tells the totals.
    ~Traffic();
    Traffic(const Traffic&) = delete;
    Traffic& operator=(const Traffic&) = delete;

    // The exchange begins now, and connecting has taken so long.
    void Begin(std::chrono::duration<double> connecting);

    // Count the bytes and, with --hex, write them to standard output. Throw Failure with
    // LocalFailure.
    void Sent(std::string_view bytes);
    void Received(std::string_view bytes);

    // Whether standard output shows the bytes already.
    bool ShowsBytes() const noexcept { return showsBytes_; }

    Totals Current() const;

    // Tells the totals the first time: to programs, and with --stats to people.
    void End() noexcept;

private:
    using Clock = std::chrono::steady_clock;

    VelSockTools::Event EventOf(const Totals& totals) const;
    std::string Label() const;

    const bool showsBytes_;
    const bool showsTotals_;
    const int number_;
    mutable std::mutex mutex_;
    HexDump sentBytes_;
    HexDump receivedBytes_;
    Totals totals_;
    Clock::time_point begin_ = Clock::now();
    bool hasEnded_ = false;
};

// "2.4 MB"
std::string SizeText(double bytes);

}  // namespace VelSockCat
