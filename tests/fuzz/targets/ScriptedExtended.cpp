// Four extended sockets over the scripted platform, held against a model of their states, texts,
// failures, records and system calls. The input is a program: operations, each with the answers of
// the system, of which any may be a failure.
#include <VelNet/SocketXt.h>

#include <array>

#include "fuzz/ExtendedOptions.h"
#include "fuzz/Program.h"

namespace {

using namespace Fuzz;
using namespace Scripted;
using VelNet::Socket;
using VelNet::SocketXt;
using State = ScriptedModel::State;
using Slot = ExtendedModel::Slot;

class Program : public ExtendedOptions {
public:
    using ExtendedOptions::ExtendedOptions;

    void Run() {
        using Do = Operation<Program, Slot>;
        static constexpr std::array Operations = {Do{&Program::Create, false},
                                                  Do{&Program::CreateOfFamily, false},
                                                  Do{&Program::Bind},
                                                  Do{&Program::Listen},
                                                  Do{&Program::Connect},
                                                  Do{&Program::Accept},
                                                  Do{&Program::Send},
                                                  Do{&Program::Receive},
                                                  Do{&Program::SendTo},
                                                  Do{&Program::RecvFrom},
                                                  Do{&Program::Close},
                                                  Do{&Program::Drop},
                                                  Do{&Program::SetReceiveTimeout},
                                                  Do{&Program::SetSendTimeout},
                                                  Do{&Program::SetReuse},
                                                  Do{&Program::SetForBroadcast},
                                                  Do{&Program::SetForMulticast},
                                                  Do{&Program::SetNonBlocking},
                                                  Do{&Program::IsDataAvailable},
                                                  Do{&Program::GetStatus},
                                                  Do{&Program::GetSpecialAddress},
                                                  Do{&Program::UseOctets},
                                                  Do{&Program::CompareHandles},
                                                  Do{&Program::SwitchRouter, false}};
        Play(*this, input_, slots_, Operations, &Program::Drop);
        ForgetLostLists();
    }

private:
    static TextEnd Nobody() { return {"no-ip", "no-port"}; }

    // The kind that the next socket is to be of.
    Socket::SOCKET_TYPE TakeType(Slot& made) {
        const unsigned int type = input_.Below(3);
        made.type = std::array{1, 2, 0}[type];
        return static_cast<Socket::SOCKET_TYPE>(type == 2 ? 5 : type);
    }
    Socket::SOCKET_PROTOCOL TakeProtocol(Slot& made) {
        const unsigned int protocol = input_.Below(3);
        made.protocol = std::array{6, 17, 0}[protocol];
        return static_cast<Socket::SOCKET_PROTOCOL>(protocol == 2 ? 7 : protocol);
    }

    static void BecomeOfFamily(Slot& made, int number) {
        if (number == Winsock::FamilyIpv4) made.family = SocketXt::FAMILY_IPV4;
        if (number == Winsock::FamilyIpv6) made.family = SocketXt::FAMILY_IPV6;
        made.state = State::Created;
    }

    void Create(Slot& slot) {
        Drop(slot);
        Slot made;
        const auto type = TakeType(made);
        const auto protocol = TakeProtocol(made);
        const Thrown expected = ExpectCreation(made);
        Fuzz::ExpectOutcome("CreateSocketXt", expected,
                            [&] { made.socket = VelNet::CreateSocketXt(type, protocol); });
        if (!expected) slot = std::move(made);
    }

    // A computer without addresses counts as refused, whatever the last error is.
    Thrown ExpectCreation(Slot& made) {
        const Label label = {"CreateSocketXt", "cannot create a socket"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        ExpectCall("ComputerName()");
        Walk walk = ExpectWalk(Quoted(ThisComputer) + ", null, {0, 0, " + made.Kind() + "}",
                               {"socket(", ", " + made.Kind() + ")", On::Socket()});
        if (walk.outcome == Walk::Empty) {
            ExpectCall("WSAGetLastError()");
            walk.error = Disturbance;
        }
        ExpectCall("WSACleanup()");
        if (walk.outcome == Walk::Unresolved)
            return Failing(label, "::getaddrinfo", {}, walk.error);
        if (walk.outcome != Walk::Accepted) return Failing(label, "::socket", {}, walk.error);
        made.handle = NextHandle();
        BecomeOfFamily(made, walk.family);
        return {};
    }

    void CreateOfFamily(Slot& slot) {
        Drop(slot);
        Slot made;
        const auto type = TakeType(made);
        const auto protocol = TakeProtocol(made);
        const bool isIpv6 = input_.Flag();
        const Thrown expected = ExpectCreationOf(made, isIpv6 ? 23 : 2);
        Fuzz::ExpectOutcome("CreateSocketXt", expected, [&] {
            made.socket = VelNet::CreateSocketXt(
                type, protocol, isIpv6 ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4);
        });
        if (!expected) slot = std::move(made);
    }

    Thrown ExpectCreationOf(Slot& made, int family) {
        const Label label = {"CreateSocketXt", "cannot create a socket"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        const int failure = TakeFailure();
        if (failure != 0) On::Socket().Fails(failure);
        ExpectCall("socket(" + std::to_string(family) + ", " + made.Kind() + ")", failure);
        ExpectCall("WSACleanup()");
        if (failure != 0) return Failing(label, "::socket", {}, failure);
        made.handle = NextHandle();
        BecomeOfFamily(made, family);
        return {};
    }

    void Bind(Slot& slot) {
        const Place place = TakePlace(slot);
        const Thrown expected = ExpectBind(slot, place.texts);
        Fuzz::ExpectOutcome("Bind", expected, [&] {
            if (place.kind != 0)
                slot.socket->Bind(place.kind, place.texts.port.c_str());
            else
                slot.socket->Bind(place.texts.host.c_str(), place.texts.port.c_str());
        });
    }

    // No address at all is no failure, and changes nothing.
    Thrown ExpectBind(Slot& slot, const TextEnd& place) {
        const Label label = {"SocketXtImpl::Bind", "cannot bind socket to local address"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        const Walk walk =
            ExpectWalk(Question(place, slot), {"bind(" + slot.handle + ", ", ")", On::Bind()});
        ExpectCall("WSACleanup()");
        if (walk.outcome == Walk::Unresolved)
            return Failing(label, "::getaddrinfo", place, walk.error);
        if (walk.outcome == Walk::Refused) return Failing(label, "::bind", place, walk.error);
        if (walk.outcome == Walk::Empty) return {};
        if (slot.type == 1) slot.state = State::Bound;
        if (slot.type == 2) slot.state = State::Connected;
        slot.local = place;
        return {};
    }

    void Listen(Slot& slot) {
        const int failure = TakeFailure();
        if (failure != 0) On::Listen().Fails(failure);
        ExpectCall("listen(" + slot.handle + ", 2)", failure);
        const Thrown expected = FailingIf(
            failure, {"SocketXtImpl::Listen", "cannot listen on socket"}, "::listen", slot.local);
        Fuzz::ExpectOutcome("Listen", expected,
                            [&] { Expect("Listen's result", 0, slot.socket->Listen()); });
        if (failure == 0) slot.state = State::Listening;
    }

    void Connect(Slot& slot) {
        const Place place = TakePlace(slot);
        const Thrown expected = ExpectConnect(slot, place.texts);
        Fuzz::ExpectOutcome("Connect", expected, [&] {
            if (place.kind != 0)
                slot.socket->Connect(place.kind, place.texts.port.c_str());
            else
                slot.socket->Connect(place.texts.host.c_str(), place.texts.port.c_str());
        });
    }

    // The own end's texts are kept even if the call fails; no address at all is recorded as a
    // connection.
    Thrown ExpectConnect(Slot& slot, const TextEnd& place) {
        const Label label = {"SocketXtImpl::Connect",
                             "cannot connect local socket to a remote address"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        ExpectCall("ComputerName()");
        slot.local = {ThisComputer, "0"};
        const Walk walk = ExpectWalk(Question(place, slot),
                                     {"connect(" + slot.handle + ", ", ")", On::Connect()});
        ExpectCall("WSACleanup()");
        if (walk.outcome == Walk::Unresolved)
            return Failing(label, "::getaddrinfo", place, walk.error);
        if (walk.outcome == Walk::Refused)
            return Failing(label, "::connect", Joined(slot.local, place), walk.error);
        if (walk.outcome == Walk::Accepted) {
            slot.state = State::Connected;
            slot.remote = place;
        }
        ExpectLine(ConnectionLine("Connected", slot.local, slot.remote));
        return {};
    }

    void Accept(Slot& slot) {
        Slot& target = slots_[input_.Below(4)];
        if (&target == &slot) return;
        Drop(target);
        TextEnd told = {"kept", "kept"};
        Slot accepted;
        const Thrown expected = ExpectAccept(slot, accepted, told);
        VelBase::ReturnString host("kept");
        VelBase::ReturnString port("kept");
        Fuzz::ExpectOutcome("Accept", expected,
                            [&] { slot.socket->Accept(target.socket, host, port); });
        Expect<std::string>("the peer's host", told.host, host.c_str());
        Expect<std::string>("the peer's port", told.port, port.c_str());
        Expect("whether there is a socket", !expected, static_cast<bool>(target.socket));
        accepted.socket = std::move(target.socket);
        target = std::move(accepted);
    }

    // The listener keeps the peer's texts, and the new socket has none.
    Thrown ExpectAccept(Slot& listener, Slot& accepted, TextEnd& told) {
        const std::string function = "SocketXtImpl::Accept";
        const Label label = {function, "cannot accept on local socket from remote address"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        const int failure = TakeFailure();
        const Peer peer = TakePeer();
        accepted.handle = NextAcceptedHandle();
        if (failure != 0) On::Accept().Fails(failure);
        if (failure == 0) On::Accept().ReturnsRaw(accepted.Number(), peer.address);
        ExpectCall("accept(" + listener.handle + ", 128)", failure);
        if (failure == 0 &&
            ExpectNames({function, "cannot get remote host name and port"}, peer, 10, told)) {
            listener.remote = told;
            ExpectLine(ConnectionLine("Connected", listener.local, listener.remote));
        }
        ExpectCall("WSACleanup()");
        if (failure != 0) return Failing(label, "::accept", listener.local, failure);
        accepted.state = State::Connected;
        accepted.type = listener.type;
        accepted.protocol = listener.protocol;
        accepted.family = listener.family;
        return {};
    }

    void Send(Slot& slot) {
        const std::string bytes(input_.Line());
        const Transfer transfer = ExpectSend(slot.handle, bytes);
        const bool isTold = transfer.failure != 10035;
        const Thrown expected = FailingIf(isTold ? transfer.failure : 0,
                                          {"SocketXtImpl::Send", "send on socket failed"}, "::send",
                                          Joined(slot.local, slot.remote));
        if (transfer.failure == 0)
            ExpectLines(TransferLines("Sent", transfer.bytes, slot.local, slot.remote));
        ScriptedModel::Send(*slot.socket, bytes, transfer, expected);
    }

    void Receive(Slot& slot) {
        const Transfer transfer = ExpectRecv(slot.handle);
        const Thrown expected = ExpectReceived(slot, transfer.bytes, transfer.failure);
        ScriptedModel::Receive(*slot.socket, transfer, expected);
    }

    // At the end of a stream the host is shown with a colon.
    Thrown ExpectReceived(const Slot& slot, const std::string& bytes, int failure) {
        const std::string function = "SocketXtImpl::Receive";
        if (failure != 0)
            return Failing({function, "recieve on socket failed"}, "::recv",
                           Joined(slot.local, slot.remote), failure);
        if (bytes.empty())
            return Failing(
                {function, "::recv could not be completed because the connection has been closed"},
                "::recv", {slot.local.host + ":", slot.local.port}, -1);
        ExpectLines(TransferLines("Received", bytes, slot.local, slot.remote));
        return {};
    }

    void SendTo(Slot& slot) {
        const Place place = TakePlace(slot);
        const std::string bytes(input_.Line());
        const auto size = static_cast<int>(bytes.size());
        const Thrown expected = ExpectSendTo(slot, place.texts, bytes);
        const char* const port = place.texts.port.c_str();
        Fuzz::ExpectOutcome("SendTo", expected, [&] {
            const int sent =
                place.kind != 0
                    ? slot.socket->SendTo(bytes.data(), size, place.kind, port)
                    : slot.socket->SendTo(bytes.data(), size, place.texts.host.c_str(), port);
            Expect("the bytes sent", size, sent);
        });
    }

    Thrown ExpectSendTo(Slot& slot, const TextEnd& place, const std::string& bytes) {
        const Label label = {"SocketXtImpl::SendTo", "cannot sendto using connectionless socket"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        Walk walk =
            ExpectWalk(Question(place, slot), {"sendto(" + slot.handle + ", " + Quoted(bytes) +
                                                   ", " + std::to_string(bytes.size()) + ", 0, ",
                                               ")", On::Sendto()});
        if (walk.outcome == Walk::Empty) {
            ExpectCall("WSAGetLastError()");
            walk.error = Disturbance;
        }
        const bool isTraced = IsOn("Packet Trace") || IsOn("Verbose Packet Trace");
        if (walk.outcome == Walk::Accepted && isTraced) ExpectCall("ComputerName()");
        ExpectCall("WSACleanup()");
        if (walk.outcome == Walk::Unresolved)
            return Failing(label, "::getaddrinfo", place, walk.error);
        if (walk.outcome != Walk::Accepted) return Failing(label, "::sendto", place, walk.error);
        ExpectLines(TransferLines("Sendto", bytes, {ThisComputer, "Random Port"}, place));
        return {};
    }

    void RecvFrom(Slot& slot) {
        const std::string bytes(input_.Line());
        TextEnd told = {"kept", "kept"};
        const Thrown expected = ExpectRecvFrom(slot, bytes, told);
        VelBase::ReturnString host("kept");
        VelBase::ReturnString port("kept");
        std::string buffer(2000, '?');
        Fuzz::ExpectOutcome("RecvFrom", expected, [&] {
            const int count = slot.socket->RecvFrom(buffer.data(), 2000, host, port);
            Expect("the datagram", bytes, buffer.substr(0, static_cast<std::size_t>(count)));
        });
        Expect<std::string>("the sender's host", told.host, host.c_str());
        Expect<std::string>("the sender's port", told.port, port.c_str());
    }

    Thrown ExpectRecvFrom(const Slot& slot, const std::string& bytes, TextEnd& told) {
        const std::string function = "SocketXtImpl::RecvFrom";
        const Label label = {function, "cannot recvfrom using connectionless socket"};
        if (const Thrown failure = ExpectStartUp(label)) return failure;
        const int failure = TakeFailure();
        const Peer peer = TakePeer();
        if (failure != 0) On::Recvfrom().Fails(failure);
        if (failure == 0) On::Recvfrom().DeliversFrom(bytes, peer.address);
        ExpectCall("recvfrom(" + slot.handle + ", 2000, 0, 128)", failure);
        if (failure == 0)
            ExpectNames({function, "cannot get remote host and port"}, peer,
                        slot.type == 2 ? 26 : 10, told);
        ExpectCall("WSACleanup()");
        if (failure != 0) return Failing(label, "::recvfrom", Nobody(), failure);
        ExpectLines(TransferLines("Recvfrom", bytes, slot.local, told));
        return {};
    }

    void Close(Slot& slot) {
        const Thrown expected = ExpectClosed(slot);
        Fuzz::ExpectOutcome("Close", expected, [&] { slot.socket->Close(); });
    }

    void Drop(Slot& slot) {
        if (slot.socket && slot.IsOpen()) ExpectClosed(slot);
        slot = {};
    }

    void SwitchRouter(Slot&) { SwitchACategory(); }
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::PlayScene([&] { Program(Fuzz::Input(data, size)).Run(); });
    return 0;
}
