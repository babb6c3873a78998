#include <VelNet/SocketInitialization.h>
#include <support/Threads.h>

#include <future>
#include <new>

#include "faults/scenes/Scene.h"

namespace Faults {

namespace {

std::string Exchange() {
    const VelNet::SocketInitialization layer;
    const SocketPtr listener = Stream();
    listener->SetReuseAddress();
    listener->Bind(Loopback(), 0);
    std::string text = Line(listener->Listen());
    const SocketPtr client = Stream();
    client->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress peer;
    const SocketPtr server = listener->Accept(peer);
    Require(bool(server), "a blocking listener accepted nothing");
    SendWhole(*client, "question");
    text += Line(server->IsDataAvailable()) + Line(server->GetStatus());
    text += Line(ReceiveWhole(*server, 8));
    SendWhole(*server, "answer");
    text += Line(ReceiveWhole(*client, 6)) + Line(client->GetStatus());
    text += Line(client->IsSameSocket(*server)) + Line(client->IsValid());
    text += Line(client->GetRemoteAddress().GetPort() == listener->GetLocalAddress().GetPort());
    client->Close();
    char byte = 0;
    text += OutcomeOf(VelNet::SOCKET_ERR_UNKNOWN, [&] { (void)server->Receive(&byte, 1); });
    return text + Line(client->IsValid());
}

std::string Datagrams() {
    const VelNet::SocketInitialization layer;
    const SocketPtr one = Datagram();
    const SocketPtr other = Datagram();
    one->Bind(Loopback(), 0);
    other->Bind(Loopback(), 0);
    one->Connect(Loopback(), other->GetLocalAddress().GetPort());
    other->Connect(Loopback(), one->GetLocalAddress().GetPort());
    std::string text = Line(one->Send("datagram", 8));
    char room[16] = {};
    const int come = other->Receive(room, sizeof room);
    Require(come == 8 && std::string(room, 8) == "datagram", "another datagram was received");
    (void)one->Send("datagram", 8);
    text += OutcomeOf(VelNet::SOCKET_ERR_MSGSIZE, [&] { (void)other->Receive(room, 4); });
    other->Close();
    (void)one->Send("nobody", 6);
    text += OutcomeOf(VelNet::SOCKET_ERR_CONNRESET, [&] { (void)one->Receive(room, 4); });
    return text;
}

std::string NonBlocking() {
    const VelNet::SocketInitialization layer;
    const SocketPtr listener = Listener();
    if (!listener->SetNonBlocking()) return "refused";
    VelNet::SocketAddress peer;
    std::string text = Line(bool(listener->Accept(peer)));
    const SocketPtr client = Stream();
    if (!client->SetNonBlocking()) return "refused";
    const auto connect = [&] {
        client->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    };
    text += OutcomeOf(VelNet::SOCKET_ERR_WOULDBLOCK, connect);
    text += OutcomeOf(VelNet::SOCKET_ERR_ISCONN, connect);
    char byte = 0;
    text += OutcomeOf(VelNet::SOCKET_ERR_WOULDBLOCK, [&] { (void)client->Receive(&byte, 1); });
    const std::string block(1 << 20, 'x');
    for (int tries = 0; client->Send(block.data(), static_cast<int>(block.size())) > 0; ++tries)
        Require(tries < 100, "nobody receives, and all is sent");
    return text;
}

std::string Refusals() {
    const VelNet::SocketInitialization layer;
    const SocketPtr listener = Listener();
    const unsigned short port = listener->GetLocalAddress().GetPort();
    std::string text =
        OutcomeOf(VelNet::SOCKET_ERR_ADDRINUSE, [&] { Stream()->Bind(Loopback(), port); });
    listener->Close();
    text += OutcomeOf(VelNet::SOCKET_ERR_CONNREFUSED, [&] { Stream()->Connect(Loopback(), port); });
    text += OutcomeOf(VelNet::SOCKET_ERR_NETUNREACH,
                      [] { Stream()->Connect(VelNet::Octets(203, 0, 113, 1), 9); });
    text += OutcomeOf(VelNet::SOCKET_ERR_INVAL, [] { Stream()->Listen(); });
    text += OutcomeOf(VelNet::SOCKET_ERR_NOTCONN, [] { Stream()->GetRemoteAddress(); });
    text += OutcomeOf(VelNet::SOCKET_ERR_NOTSOCK, [&] { (void)listener->Send("x", 1); });
    text += OutcomeOf(VelNet::SOCKET_ERR_UNKNOWN, [] {
        VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_TCP);
    });
    return text;
}

std::string Timeouts() {
    const VelNet::SocketInitialization layer;
    const Ends ends = Connected();
    const ClosedAfterAWhile bounded(*ends.client);
    ends.client->SetReceiveTimeout(1);
    ends.client->SetSendTimeout(1);
    char byte = 0;
    std::string text =
        OutcomeOf(VelNet::SOCKET_ERR_TIMEDOUT, [&] { (void)ends.client->Receive(&byte, 1); });
    text += OutcomeOf(VelNet::SOCKET_ERR_TIMEDOUT, [&] { (void)ends.client->Receive(&byte, 0); });
    const std::string block(1 << 20, 'x');
    return text + OutcomeOf(VelNet::SOCKET_ERR_TIMEDOUT, [&] {
               for (int tries = 0; tries < 100; ++tries)
                   (void)ends.client->Send(block.data(), static_cast<int>(block.size()));
           });
}

// Another thread receives. A wait that nothing ends ends by its timeout.
std::string ClosedWhileWaiting() {
    const VelNet::SocketInitialization layer;
    const Ends ends = Connected();
    std::string outcome;
    std::promise<unsigned long> begun;
    Support::HelperThread receiver([&] {
        begun.set_value(Support::CurrentThread());
        char byte = 0;
        try {
            (void)ends.server->Receive(&byte, 1);
        } catch (const VelNet::Exception& failure) {
            outcome = Line(static_cast<int>(failure.GetErrorCode()));
        } catch (const std::bad_alloc&) {
            outcome = "no memory";
        }
    });
    Support::AwaitWaiting(begun.get_future().get());
    ends.server->Close();
    receiver.Join();
    return outcome;
}

}  // namespace

std::vector<Scene> ClassicScenes() {
    return {{"classic exchange", Exchange},        {"classic datagrams", Datagrams},
            {"classic non-blocking", NonBlocking}, {"classic refusals", Refusals},
            {"classic timeouts", Timeouts},        {"closed while waiting", ClosedWhileWaiting}};
}

}  // namespace Faults
