// Operations on one socket beside many that are open.

#include "ScaledRows.h"
#include "harness/LibrarySockets.h"
#include "harness/RawSockets.h"

#include <vector>

namespace Bench {
namespace {

class OpenStreams {
public:
    explicit OpenStreams(int count) {
        for (int index = 0; index < count; ++index) {
            sockets_.push_back(CreateStream());
            sockets_.back()->Bind(Loopback(), 0);
        }
    }

private:
    std::vector<SocketOwner> sockets_;
};

// Made, bound to a given port, closed.
class LifeBesideMany : public ScaledScene {
public:
    explicit LifeBesideMany(int others) : others_(others) {}

    int Do() const {
        const SocketOwner socket = CreateStream();
        socket->Bind(Loopback(), port_);
        socket->Close();
        return 1;
    }

private:
    OpenStreams others_;
    unsigned short port_ = FreePorts(1).front();
};

class TransferBesideMany : public ScaledScene {
public:
    explicit TransferBesideMany(int others) : others_(others) {}

    int Do() const {
        char byte = 0;
        return pair_.Client().Send(&byte, 1) == 1 && pair_.Server().Receive(&byte, 1) == 1;
    }

private:
    OpenStreams others_;
    ClassicPair pair_;
};

}  // namespace

void AddSocketGrowth(Cases& cases) {
    const auto numbers = {1, 10, 100, 1'000, 10'000};
    AddGrowth<LifeBesideMany>(cases, "life-beside-open-sockets", numbers);
    AddGrowth<TransferBesideMany>(cases, "transfer-beside-open-sockets", numbers);
}

}  // namespace Bench
