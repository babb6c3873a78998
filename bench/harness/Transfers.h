// Blocks of 64 bytes that are sent and received over a connection, whatever its ends are made of.
#pragma once

#include <array>
#include <cstddef>
#include <utility>
#include <vector>

namespace Bench {

constexpr int BlockSize = 64;
using Block = std::array<char, BlockSize>;

// A batch fits into a connection's buffers.
constexpr int BlocksInABatch = 100;

// Takes out of a connection what was sent over it, in pieces of so many bytes.
template <class End>
void TakeOut(End&& receiver, int bytes, int pieceSize) {
    std::vector<char> piece(static_cast<std::size_t>(pieceSize));
    while (bytes > 0)
        bytes -= receiver.Receive(piece.data(), pieceSize);
}

// An end has int Send(const char*, int) and int Receive(char*, int), which return how many bytes
// went; a pair of ends is made without arguments.
template <class Pair>
class SendScene {
public:
    static constexpr int Operations = BlocksInABatch;
    static constexpr int Result = BlockSize;

    void Prepare() {
        TakeOut(pair_.Server(), std::exchange(sent_, BlocksInABatch * BlockSize), BlockSize);
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
            static_cast<void>(pair_.Client().Send(block_.data(), BlockSize));
    }
    int Do() { return pair_.Server().Receive(block_.data(), BlockSize); }

private:
    Pair pair_;
    Block block_{};
};

}  // namespace Bench
