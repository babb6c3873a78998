#include "Listener.h"

#include <VelCompanion/Connecting.h>

#include <utility>

#include "ClassicSocket.h"
#include "Endpoint.h"
#include "ExtendedSocket.h"
#include "Limits.h"
#include "SystemNetwork.h"

namespace VelSockCat {

namespace {

using VelBase::ReturnPtrI;
using VelNet::Socket;
using VelNet::SocketXt;

class ClassicListener : public Listener {
public:
    explicit ClassicListener(const Arguments& arguments)
        : socket_(BindClassic(Kind::Stream, arguments)) {
        AnnounceListening(*socket_);
    }

private:
    Accepted AcceptNext(const Arguments& arguments) override {
        VelNet::SocketAddress remote;
        auto socket =
            VelCompanion::AcceptWithin(*socket_, remote, LimitOf(arguments.acceptTimeout));
        return {std::move(socket), remote.GetOctets().GetAddressString().c_str(),
                std::to_string(remote.GetPort())};
    }

    ReturnPtrI<Socket> socket_;
};

class ExtendedListener : public Listener {
public:
    explicit ExtendedListener(const Arguments& arguments)
        : socket_(CreateExtended(Kind::Stream, arguments)) {
        const std::string host = BindExtended(*socket_, Kind::Stream, arguments);
        AnnounceListening(host, VelSockTools::LocalPortOf(*socket_));
    }

private:
    Accepted AcceptNext(const Arguments& arguments) override {
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        const auto socket =
            VelCompanion::AcceptWithin(*socket_, host, port, LimitOf(arguments.acceptTimeout));
        return {socket.Get(), host.c_str(), port.c_str()};
    }

    ReturnPtrI<SocketXt> socket_;
};

void RemarkAccepted(const Accepted& peer, int number) {
    VelSockTools::JsonObject members;
    members.AddText("host", peer.host);
    members.Add("port", peer.port);
    members.AddNumber("connection", number);
    Remark({"accepted", "connection from " + peer.host + " port " + peer.port, members});
}

}  // namespace

std::optional<Accepted> Listener::Accept(const Arguments& arguments) {
    Accepted peer = AcceptNext(arguments);
    if (!peer.socket) return {};
    SetTimeouts(*peer.socket, arguments);
    RemarkAccepted(peer, ++number_);
    return peer;
}

std::unique_ptr<Listener> OpenListener(const Arguments& arguments) {
    if (arguments.Family() == SocketFamily::Classic)
        return std::make_unique<ClassicListener>(arguments);
    return std::make_unique<ExtendedListener>(arguments);
}

}  // namespace VelSockCat
