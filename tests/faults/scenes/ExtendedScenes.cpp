#include <VelNet/SocketInitialization.h>
#include <support/RawPeer.h>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

using VelBase::ReturnString;
using VelNet::SocketXt;

constexpr unsigned int Patience = 1'000;

XtPtr StreamXt(SocketXt::ADDR_FAMILY family) {
    XtPtr socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP, family);
    socket->SetReceiveTimeout(Patience);
    socket->SetSendTimeout(Patience);
    return socket;
}

std::string PortOf(const SocketXt& socket) {
    return std::to_string(Support::LocalPortOf(socket.GetHandle()));
}

std::string Exchange(SocketXt::ADDR_FAMILY family) {
    const VelNet::SocketInitialization layer;
    const XtPtr listener = StreamXt(family);
    listener->SetReuseAddress();
    listener->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    std::string text = Line(listener->Listen());
    const XtPtr client = StreamXt(family);
    client->Connect(VelNet::SPECIAL_LOOPBACK, PortOf(*listener).c_str());
    XtPtr server;
    ReturnString host;
    ReturnString port;
    listener->Accept(server, host, port);
    Require(bool(server), "a blocking listener accepted nothing");
    text += Line(host.c_str()) + Line(static_cast<int>(server->GetAddressFamily()));
    SendWhole(*client, "question");
    text += Line(server->IsDataAvailable()) + Line(server->GetStatus());
    text += Line(ReceiveWhole(*server, 8));
    SendWhole(*server, "answer");
    text += Line(ReceiveWhole(*client, 6));
    text += Line(client->IsSameSocket(*server)) + Line(client->IsValid());
    server->Close();
    char byte = 0;
    text += OutcomeOf(VelNet::SOCKET_ERR_UNKNOWN, [&] { (void)client->Receive(&byte, 1); });
    text += OutcomeOf(VelNet::SOCKET_ERR_NOTSOCK, [&] { server->Close(); });
    return text;
}

std::string Ipv4() {
    return Exchange(SocketXt::FAMILY_IPV4);
}

std::string Ipv6() {
    return Exchange(SocketXt::FAMILY_IPV6);
}

// As the local host's name has it, which no table knows.
std::string OfEitherFamily() {
    const VelNet::SocketInitialization layer;
    const XtPtr listener =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    const ReturnString loopback =
        listener->GetSpecialAddress(VelNet::SPECIAL_LOOPBACK, listener->GetAddressFamily());
    listener->Bind(loopback.c_str(), "0");
    listener->Listen();
    const XtPtr client =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    client->Connect(loopback.c_str(), PortOf(*listener).c_str());
    XtPtr server;
    ReturnString host;
    ReturnString port;
    std::string text;
    Require(&listener->Accept(server, host, port) == &server, "another owner was returned");
    for (const auto kind : {VelNet::SPECIAL_ANY, VelNet::SPECIAL_LOOPBACK,
                            VelNet::SPECIAL_THIS_MACHINE, VelNet::SPECIAL_BROADCAST})
        text += Line(client->GetSpecialAddress(kind, SocketXt::FAMILY_IPV6).c_str());
    return text;
}

std::string NonBlocking() {
    const VelNet::SocketInitialization layer;
    const XtPtr listener = StreamXt(SocketXt::FAMILY_IPV4);
    listener->Bind("127.0.0.1", "0");
    listener->Listen();
    if (!listener->SetNonBlocking()) return "refused";
    XtPtr server;
    ReturnString host;
    ReturnString port;
    std::string text =
        OutcomeOf(VelNet::SOCKET_ERR_WOULDBLOCK, [&] { listener->Accept(server, host, port); });
    const XtPtr client = StreamXt(SocketXt::FAMILY_IPV4);
    if (!client->SetNonBlocking()) return "refused";
    const auto connect = [&] { client->Connect("127.0.0.1", PortOf(*listener).c_str()); };
    text += OutcomeOf(VelNet::SOCKET_ERR_WOULDBLOCK, connect);
    return text + OutcomeOf(VelNet::SOCKET_ERR_ISCONN, connect);
}

std::string Refusals() {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = StreamXt(SocketXt::FAMILY_IPV4);
    std::string text =
        OutcomeOf(VelNet::SOCKET_ERR_NETUNREACH, [&] { socket->Connect("203.0.113.1", "9"); });
    text += OutcomeOf(VelNet::SOCKET_ERR_AFNOSUPPORT, [&] { socket->Bind("::1", "0"); });
    text += OutcomeOf(VelNet::SOCKET_ERR_UNKNOWN,
                      [&] { socket->Connect("127.0.0.1", "no-such-service"); });
    text += OutcomeOf(VelNet::SOCKET_ERR_NOPROTOOPT, [&] { socket->SetSocketForBroadcast(); });
    text += OutcomeOf(VelNet::SOCKET_ERR_AFNOSUPPORT, [] {
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP,
                               static_cast<SocketXt::ADDR_FAMILY>(7));
    });
    return text;
}

// What is there for the classic socket's sake alone.
std::string WithoutEffect() {
    const VelNet::SocketInitialization layer;
    const XtPtr socket = StreamXt(SocketXt::FAMILY_IPV4);
    socket->Bind(Loopback(), 1);
    socket->Connect(Loopback(), 1);
    VelNet::SocketAddress peer;
    return Line(bool(socket->Accept(peer))) + Line(socket->GetLocalAddress().GetPort()) +
           Line(socket->GetRemoteAddress().GetPort());
}

}  // namespace

std::vector<Scene> ExtendedScenes() {
    return {{"extended IPv4", Ipv4},
            {"extended IPv6", Ipv6},
            {"extended of either family", OfEitherFamily},
            {"extended non-blocking", NonBlocking},
            {"extended refusals", Refusals},
            {"extended without effect", WithoutEffect}};
}

}  // namespace Faults
