#include <VelCompanion/Connecting.h>
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelCompanion/Pairs.h>
#include <VelCompanion/StopSignal.h>
#include <VelCompanion/Transfers.h>
#include <VelCompanion/Waiting.h>
#include <VelNet/SocketInitialization.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

constexpr VelCompanion::Milliseconds Limit(10'000);

std::string Transfers() {
    const VelNet::SocketInitialization layer;
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    VelCompanion::SendAll(*pair.first, "line\nexact", Limit);
    std::string come;
    const auto line = VelCompanion::ReceiveLine(*pair.second, come, 100, Limit);
    Require(line && *line == "line", "another line was received");
    while (come.size() < 5) {
        char byte = 0;
        Require(VelCompanion::ReceiveSome(*pair.second, &byte, 1, Limit) == 1, "the end came");
        come += byte;
    }
    return Line(come) + Line(VelCompanion::WaitToSend(*pair.first, Limit));
}

std::string Connecting() {
    const VelNet::SocketInitialization layer;
    const SocketPtr listener = Listener();
    const SocketPtr client = Stream();
    VelCompanion::ConnectWithin(*client, Loopback(), listener->GetLocalAddress().GetPort(),
                                VelCompanion::NoLimit);
    VelNet::SocketAddress peer;
    const SocketPtr server = VelCompanion::AcceptWithin(*listener, peer, Limit);
    Require(bool(server), "nobody was accepted");
    return Line(VelCompanion::WaitToReceive(*server, VelCompanion::Milliseconds(0)));
}

std::string Stopping() {
    const VelNet::SocketInitialization layer;
    VelCompanion::StopSignal signal;
    const VelCompanion::CollectionOwner collection = VelCompanion::MakeCollection();
    signal.AddTo(*collection);
    const SocketPtr listener = Listener();
    const VelCompanion::ClosedByStop closed(signal, *listener);
    {
        const Support::Uncancelled whole;
        signal.Stop();
    }
    const auto ready = VelCompanion::Select(*collection, 1);
    return Line(listener->IsValid()) + Line(signal.IsStopped());
}

std::string Descriptions() {
    const VelNet::SocketInitialization layer;
    try {
        Stream()->Listen();
    } catch (const VelNet::Exception&) {
        return Line(VelCompanion::DescribeCurrentException());
    }
    return "succeeded\n";
}

}  // namespace

std::vector<Scene> CompanionScenes() {
    return {{"companion's transfers", Transfers},
            {"companion's connecting", Connecting},
            {"companion's stop signal", Stopping},
            {"companion's texts", Descriptions}};
}

}  // namespace Faults
