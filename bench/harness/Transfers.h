// Blocks of 64 bytes that are sent and received over a connection, whatever its ends are made of.
#pragma once

#include <array>

namespace Bench {

constexpr int BlockSize = 64;
using Block = std::array<char, BlockSize>;

// A batch fits into a connection's buffers.
constexpr int BlocksInABatch = 100;

// An end has int Send(const char*, int) and int Receive(char*, int), which return how many bytes
// went; a pair of ends is made without arguments.
template <class Pair>
class SendScene {
public:
    static constexpr int Operations = BlocksInABatch;
    static constexpr int Result = BlockSize;

    // Takes out what was sent before.
    void Prepare() {
        while (sent_ > 0)
            sent_ -= pair_.Server().Receive(block_.data(), BlockSize);
        sent_ = BlocksInABatch * BlockSize;
    }
    int Do() { return pair_.Client().Send(block_.data(), BlockSize); }

private:
    Pair pair_;
    Block block_{};
    int sent_ = 0;
};

template <class Pair>
class ReceiveScene {
public:
    static constexpr int Operations = BlocksInABatch;
    static constexpr int Result = BlockSize;

    void Prepare() {
        for (int index = 0; index < BlocksInABatch; ++index)
            pair_.Client().Send(block_.data(), BlockSize);
    }
    int Do() { return pair_.Server().Receive(block_.data(), BlockSize); }

private:
    Pair pair_;
    Block block_{};
};

}  // namespace Bench
