// Threads that each work with sockets of their own. What they wait for each other shows in system
// calls on futexes.

#include "ScaledRows.h"
#include "ThreadTeam.h"
#include "harness/LibrarySockets.h"

#include <cstddef>
#include <vector>

namespace Bench {
namespace {

constexpr int OperationsOfAThread = 500;

struct Transfer {
    ClassicPair pair;

    void Do() const {
        char byte = 0;
        static_cast<void>(pair.Client().Send(&byte, 1));
        static_cast<void>(pair.Server().Receive(&byte, 1));
    }
};

struct Life {
    void Do() const {
        const SocketOwner socket = CreateStream();
        socket->Bind(Loopback(), 0);
        socket->Close();
    }
};

struct DatagramByText {
    ExtendedOwner socket = CreateBoundExtendedDatagram();
    std::string port = PortTextOf(*socket);

    void Do() const {
        char byte = 0;
        VelBase::ReturnString fromHost;
        VelBase::ReturnString fromPort;
        socket->SendTo(&byte, 1, LoopbackTextOf(*socket), port.c_str());
        static_cast<void>(socket->RecvFrom(&byte, 1, fromHost, fromPort));
    }
};

template <class Subject>
class ThreadScene : public ScaledScene {
public:
    explicit ThreadScene(int threads)
        : subjects_(static_cast<std::size_t>(threads)),
          team_(threads, [this](std::size_t number) { DoAll(subjects_[number]); }) {}

    int Do() { return team_.DoTask() ? 1 : 0; }

private:
    static void DoAll(const Subject& subject) {
        for (int index = 0; index < OperationsOfAThread; ++index)
            subject.Do();
    }

    std::vector<Subject> subjects_;
    ThreadTeam team_;
};

}  // namespace

void AddThreadGrowth(Cases& cases) {
    const auto numbers = {1, 2, 4, 8, 16};
    AddGrowth<ThreadScene<Transfer>>(cases, "threads-transferring", numbers);
    AddGrowth<ThreadScene<Life>>(cases, "threads-making-sockets", numbers);
    AddGrowth<ThreadScene<DatagramByText>>(cases, "threads-sending-by-text", numbers);
}

}  // namespace Bench
