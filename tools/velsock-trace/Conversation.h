// A conversation as the records of one or both of its ends tell it.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Endpoint.h"

namespace VelSockTrace {

enum class Outcome {
    Orderly,       // closed, and no loss was recorded
    Failed,        // lost: the number says why
    NotConnected,  // never established: the number says why
    Open,          // its end is not recorded, but its beginning is
    Unknown,       // neither is; so it is with datagrams
};

// What one log has of what one end has sent. The plain records and those with data each tell all of
// it, if they are on.
struct Count {
    std::uint64_t bytes = 0;
    std::uint64_t transfers = 0;
};
struct LoggedFlow {
    Count plain;
    Count withData;

    std::uint64_t Bytes() const noexcept { return std::max(plain.bytes, withData.bytes); }
    std::uint64_t Transfers() const noexcept {
        return std::max(plain.transfers, withData.transfers);
    }
};

// What one end has sent, as the records of each side tell.
struct Flow {
    std::array<LoggedFlow, 2> logged;

    std::uint64_t Bytes() const noexcept { return std::max(logged[0].Bytes(), logged[1].Bytes()); }
    std::uint64_t Transfers() const noexcept {
        return std::max(logged[0].Transfers(), logged[1].Transfers());
    }
};

// The records of the socket at one end.
struct Side {
    bool isLogged = false;
    bool hasConnected = false;
    bool hasEnded = false;
    bool sawPeersEnd = false;
    bool isAccepted = false;  // its records lack the ends: the listening socket's had them
    std::size_t log = 0;      // which one
};

struct Conversation {
    unsigned int number = 0;  // in the order in which they begin in the logs, from 1
    bool isDatagrams = false;
    // Another conversation has the same ends at the same time, and no mark tells their records
    // apart.
    bool isUncertain = false;
    bool isForgotten = false;      // there were too many at once
    std::array<Endpoint, 2> ends;  // the first is the local one of the first side
    std::array<Side, 2> sides;     // their records, in the same order
    std::array<Flow, 2> flows;     // what each end has sent
    std::int64_t start = 0;
    std::int64_t last = 0;  // record
    int loss = 0;           // the number of the failure that ended it
    bool isRefused = false;
    unsigned int failures = 0;
    std::optional<std::size_t> client;       // the end that has connected, if the records tell
    std::optional<std::size_t> firstSender;  // the end that has sent first

    bool HasConnected() const noexcept { return sides[0].hasConnected || sides[1].hasConnected; }
    bool HasEnded() const noexcept {
        return std::all_of(sides.begin(), sides.end(),
                           [](const Side& side) { return !side.isLogged || side.hasEnded; });
    }
    // Whether this end has closed or ended its direction, as either side tells.
    bool HasClosed(std::size_t end) const noexcept {
        return sides[end].hasEnded || sides[1 - end].sawPeersEnd;
    }
};

Outcome OutcomeOf(const Conversation& conversation) noexcept;

// Which end has connected. If the records do not tell: the one with a port from the range that
// systems take them from, or else the one that has sent first.
std::size_t ClientOf(const Conversation& conversation) noexcept;

}  // namespace VelSockTrace
