// Moves blocks of 64 bytes over a loopback connection, through the library or by the bare system
// call, with tracing off. The measured transfers stand in the function of the name
// MeasuredTransfers, so that an instruction counter can be switched on for it alone; what fills and
// drains the connection stands outside.
//
//   transfer_cost SUBJECT BATCHES     SUBJECT: library-send bare-send library-receive bare-receive
//
// prints how many transfers were measured, how often memory was requested in them and how many
// nanoseconds each took.

#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>
#include <sys/socket.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include "AllocationCounter.h"
#include "ConnectedPair.h"

namespace {

// Small enough for a batch to fit into the connection's buffers.
constexpr int TransfersPerBatch = 100;
constexpr int BlockSize = 64;
using Block = std::array<char, BlockSize>;

struct LibraryEnd {
    VelNet::Socket& socket;

    int Send(const Block& block) const { return socket.Send(block.data(), BlockSize); }
    int Receive(Block& block) const { return socket.Receive(block.data(), BlockSize); }
};

struct BareEnd {
    int descriptor;

    int Send(const Block& block) const {
        return static_cast<int>(::send(descriptor, block.data(), BlockSize, MSG_NOSIGNAL));
    }
    int Receive(Block& block) const {
        return static_cast<int>(::recv(descriptor, block.data(), BlockSize, 0));
    }
};

template <class End>
struct Sending {
    int operator()(const End& end, Block& block) const { return end.Send(block); }
};

template <class End>
struct Receiving {
    int operator()(const End& end, Block& block) const { return end.Receive(block); }
};

// Returns how many bytes moved.
template <class Transfer, class End>
[[gnu::noinline]] int MeasuredTransfers(const Transfer& transfer, const End& end, Block& block) {
    int moved = 0;
    for (int index = 0; index < TransfersPerBatch; ++index)
        moved += transfer(end, block);
    return moved;
}

template <class Transfer, class End>
void MoveBatch(const Transfer& transfer, const End& end, Block& block) {
    int moved = 0;
    while (moved < TransfersPerBatch * BlockSize)
        moved += transfer(end, block);
}

struct Cost {
    long transfers = 0;
    unsigned long allocations = 0;
    std::chrono::nanoseconds time{};
};

class Measurement {
public:
    explicit Measurement(int batches) : batches_(batches) {}

    template <class End>
    Cost OfSend(const End& sender, const End& receiver) {
        return OfBatches(sender, Sending<End>(),
                         [&] { MoveBatch(Receiving<End>(), receiver, block_); });
    }

    template <class End>
    Cost OfReceive(const End& sender, const End& receiver) {
        const auto fill = [&] { MoveBatch(Sending<End>(), sender, block_); };
        fill();
        return OfBatches(receiver, Receiving<End>(), fill);
    }

private:
    template <class End, class Transfer, class Restore>
    Cost OfBatches(const End& end, const Transfer& transfer, const Restore& restore) {
        Cost cost;
        for (int batch = 0; batch < batches_; ++batch) {
            AddBatch(cost, end, transfer);
            restore();
        }
        return cost;
    }

    template <class End, class Transfer>
    void AddBatch(Cost& cost, const End& end, const Transfer& transfer) {
        const unsigned long allocationsBefore = CountedAllocations();
        const auto begin = std::chrono::steady_clock::now();
        const int moved = MeasuredTransfers(transfer, end, block_);
        cost.time += std::chrono::steady_clock::now() - begin;
        cost.allocations += CountedAllocations() - allocationsBefore;
        cost.transfers += TransfersPerBatch;
        if (moved != TransfersPerBatch * BlockSize)
            throw std::runtime_error("a transfer was short");
    }

    int batches_;
    Block block_{};
};

template <class End>
Cost Measure(const std::string& direction, int batches, const End& client, const End& server) {
    Measurement measurement(batches);
    if (direction == "send") return measurement.OfSend(client, server);
    if (direction == "receive") return measurement.OfReceive(client, server);
    throw std::runtime_error("unknown direction");
}

Cost MeasureSubject(const std::string& subject, int batches) {
    const std::size_t dash = subject.find('-');
    const std::string kind = subject.substr(0, dash);
    const std::string direction = dash == std::string::npos ? "" : subject.substr(dash + 1);
    if (kind == "library") {
        const LibraryPair pair;
        return Measure(direction, batches, LibraryEnd{*pair.client}, LibraryEnd{*pair.server});
    }
    if (kind == "bare") {
        const BarePair pair;
        return Measure(direction, batches, BareEnd{pair.client}, BareEnd{pair.server});
    }
    throw std::runtime_error("unknown subject");
}

int Run(const std::string& subject, int batches) {
    const VelNet::SocketInitialization sockets;
    const Cost cost = MeasureSubject(subject, batches);
    if (cost.transfers == 0) throw std::runtime_error("nothing was measured");
    // The sockets were allocated by then.
    if (CountedAllocations() == 0) throw std::runtime_error("allocations are not counted");
    std::printf("%ld %lu %lld\n", cost.transfers, cost.allocations,
                static_cast<long long>(cost.time.count()) / cost.transfers);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** words) {
    if (count != 3) {
        std::fputs("usage: transfer_cost SUBJECT BATCHES\n", stderr);
        return 2;
    }
    try {
        return Run(words[1], std::stoi(words[2]));
    } catch (const VelNet::Exception& exception) {
        std::fprintf(stderr, "transfer_cost: code %d\n", int{exception.GetErrorCode()});
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "transfer_cost: %s\n", exception.what());
    }
    return EXIT_FAILURE;
}
