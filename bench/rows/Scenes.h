// What the scenes of a row have in common, whoever plays them.
#pragma once

#include "harness/Transfers.h"

namespace Bench {

// A socket's whole life without a peer: made, bound to a port of the system's choice, closed.
class LifeScene {
public:
    static constexpr int Operations = 50;
    static constexpr int Result = 1;

    void Prepare() const noexcept {}
};

// A connection's whole life within this thread: connected, accepted, both ends closed.
class ConnectionScene {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = 1;

    void Prepare() const noexcept {}
};

// A datagram to a host and port that are given as texts, and back to texts where it arrives.
class DatagramScene {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = 2 * BlockSize;

    void Prepare() const noexcept {}

protected:
    Block block_{};
};

// Asking which of many connected sockets have bytes; so many have, and they stay unread.
constexpr int WatchedSockets = 64;

template <int ReadySockets>
class SelectionScene {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = ReadySockets;

    void Prepare() const noexcept {}
};

// Receiving where there is nothing to receive.
class FailureScene {
public:
    static constexpr int Operations = 20;
    static constexpr int Result = 1;

    void Prepare() const noexcept {}

protected:
    Block block_{};
};

}  // namespace Bench
