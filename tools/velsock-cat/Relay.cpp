// The command relay: passes connections on to another host.
#include <VelBase/ReturnPtrI.h>
#include <VelNet/SocketXt.h>

#include <future>
#include <mutex>
#include <optional>

#include "Commands.h"
#include "DatagramRelay.h"
#include "Endpoint.h"
#include "Limits.h"
#include "Serving.h"
#include "Streams.h"
#include "SystemNetwork.h"
#include "Target.h"

namespace VelSockCat {

namespace {

using VelNet::SocketXt;
using VelSockTools::Failure;

Connected ConnectToTarget(const Arguments& arguments) {
    const VelCompanion::Deadline deadline(LimitOf(arguments.connectTimeout));
    const Addresses addresses =
        AddressesOf(arguments.targetHost, SocketXt::FAMILY_UNKNOWN, deadline);
    auto target =
        ConnectToAny(Kind::Stream, addresses, arguments.targetHost, arguments.targetPort, deadline);
    if (arguments.sendTimeout) target.socket->SetSendTimeout(*arguments.sendTimeout);
    RemarkConnected(arguments.targetHost, target.address, arguments.targetPort);
    return target;
}

// Two connections as one. An orderly end of one direction is passed on and leaves the other alone;
// a failure of either ends both abruptly, so that no peer takes what it has for all there is.
class Pair {
public:
    Pair(SocketXt& client, SocketXt& target, Traffic& traffic, const Arguments& arguments)
        : client_(client), target_(target), traffic_(traffic), arguments_(arguments) {}

    void Run() {
        auto back =
            std::async(std::launch::async, [this] { Pass(target_, client_, &Traffic::Received); });
        Pass(client_, target_, &Traffic::Sent);
        back.get();
        if (failure_) throw Failure{*failure_};
    }

private:
    using Count = void (Traffic::*)(std::string_view bytes);

    void Pass(SocketXt& from, SocketXt& to, Count count) {
        try {
            PassAll(from, to, count);
            VelSockTools::EndSending(to);
        } catch (const Failure& failure) {
            Break(failure);
        }
    }

    void PassAll(SocketXt& from, SocketXt& to, Count count) {
        Block block;
        Pace pace(arguments_.rate);
        while (const std::size_t received = ReceiveSome(from, block)) {
            (traffic_.*count)({block.data(), received});
            SendAll(to, {block.data(), received}, pace);
        }
    }

    // Also ends what the other direction waits in.
    void Break(const Failure& failure) {
        const std::lock_guard lock(mutex_);
        if (failure_) return;
        failure_ = failure;
        Abort(client_);
        Abort(target_);
    }

    static void Abort(SocketXt& socket) {
        VelSockTools::EndAbruptly(socket);
        try {
            socket.Close();
        } catch (const VelNet::Exception&) {
            return;  // it has been logged
        }
    }

    SocketXt& client_;
    SocketXt& target_;
    Traffic& traffic_;
    const Arguments& arguments_;
    std::mutex mutex_;
    std::optional<Failure> failure_;
};

// A client is not to believe that a target which cannot be reached has nothing to say.
void RelayStream(Accepted& peer, Traffic& traffic, const Arguments& arguments) {
    auto& client = dynamic_cast<SocketXt&>(*peer.socket);
    VelSockTools::EndAbruptly(client);
    const Connected target = ConnectToTarget(arguments);
    VelSockTools::EndInOrder(client);
    traffic.Begin(target.connecting);
    Pair(client, *target.socket, traffic, arguments).Run();
}

}  // namespace

VelSockTools::ExitCode Relay(const Arguments& arguments) {
    if (arguments.usesDatagrams) return RelayDatagrams(arguments);
    return ServeConnections(arguments, Crowd::AtOnce, RelayStream);
}

}  // namespace VelSockCat
