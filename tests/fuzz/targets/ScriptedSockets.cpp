// Four classic sockets over the scripted platform, held against a model of their states, addresses,
// records and system calls. The input is a program: operations, each with the answer of the system.
#include <VelNet/Socket.h>

#include <array>

#include "fuzz/ClassicModel.h"
#include "fuzz/Program.h"
#include "fuzz/ScriptedScene.h"

namespace {

using namespace Fuzz;
using namespace Scripted;
using VelNet::Octets;
using State = ScriptedModel::State;
using Slot = ClassicModel::Slot;

class Program : public ClassicModel {
public:
    using ClassicModel::ClassicModel;

    void Run() {
        using Do = Operation<Program, Slot>;
        static constexpr std::array Operations = {Do{&Program::Create, false},
                                                  Do{&Program::Create, false},
                                                  Do{&Program::Bind},
                                                  Do{&Program::Listen},
                                                  Do{&Program::Connect},
                                                  Do{&Program::Connect},
                                                  Do{&Program::Accept},
                                                  Do{&Program::Send},
                                                  Do{&Program::Receive},
                                                  Do{&Program::Close},
                                                  Do{&Program::Drop},
                                                  Do{&Program::SetReceiveTimeout},
                                                  Do{&Program::SetSendTimeout},
                                                  Do{&Program::SetReuse},
                                                  Do{&Program::SetNonBlocking},
                                                  Do{&Program::IsDataAvailable},
                                                  Do{&Program::GetStatus},
                                                  Do{&Program::GetLocalAddress},
                                                  Do{&Program::GetRemoteAddress},
                                                  Do{&Program::SwitchRouter, false},
                                                  Do{&Program::CompareHandles}};
        Play(*this, input_, slots_, Operations, &Program::Drop);
    }

private:
    void Create(Slot& slot) {
        Drop(slot);
        const int failure = TakeFailure();
        if (failure != 0) On::Socket().Fails(failure);
        const bool datagrams = input_.Flag();
        ExpectCall(datagrams ? "socket(2, 2, 17)" : "socket(2, 1, 6)", failure);
        const Thrown expected =
            failure != 0 ? Failing("VelNet::CreateSocket() - FAIL. The ::socket failed", failure)
                         : Thrown();
        Fuzz::ExpectOutcome("CreateSocket", expected, [&] {
            slot.socket = datagrams ? VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM,
                                                           VelNet::Socket::PROTOCOL_UDP)
                                    : VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM,
                                                           VelNet::Socket::PROTOCOL_TCP);
        });
        if (failure != 0) return;
        slot.state = State::Created;
        slot.handle = NextHandle();
    }

    void Bind(Slot& slot) {
        const Endpoint endpoint = TakeEndpoint();
        const int failure = TakeFailure();
        if (failure != 0) On::Bind().Fails(failure);
        ExpectCall("bind(" + slot.handle + ", " + TextOf(endpoint) + ", 16)", failure);
        const Thrown expected =
            failure != 0 ? Failing("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: " +
                                       endpoint.host + ": " + std::to_string(endpoint.port),
                                   failure)
                         : Thrown();
        const Octets octets = OctetsOf(endpoint);
        Fuzz::ExpectOutcome("Bind", expected, [&] { slot.socket->Bind(octets, PortOf(endpoint)); });
        if (failure == 0) slot.state = State::Bound;
    }

    void Listen(Slot& slot) {
        const int failure = TakeFailure();
        if (failure != 0) On::Listen().Fails(failure);
        ExpectCall("listen(" + slot.handle + ", 2)", failure);
        const Thrown expected =
            failure != 0
                ? Failing("VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket", failure)
                : Thrown();
        Fuzz::ExpectOutcome("Listen", expected,
                            [&] { Expect("Listen's result", 0, slot.socket->Listen()); });
        if (failure == 0) slot.state = State::Listening;
    }

    void Connect(Slot& slot) {
        const Endpoint endpoint = TakeEndpoint();
        const int failure = TakeFailure();
        if (failure != 0) On::Connect().Fails(failure);
        ExpectCall("connect(" + slot.handle + ", " + TextOf(endpoint) + ", 16)", failure);
        const Thrown expected =
            failure != 0
                ? Failing("VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: " +
                              TextOf(endpoint),
                          failure)
                : ExpectConnected(slot);
        const Octets octets = OctetsOf(endpoint);
        Fuzz::ExpectOutcome("Connect", expected,
                            [&] { slot.socket->Connect(octets, PortOf(endpoint)); });
    }

    Thrown ExpectConnected(Slot& slot) {
        slot.state = State::Connected;
        Thrown expected = ExpectQuery(slot, false, slot.local);
        if (expected.code == 0 && expected.text.empty())
            expected = ExpectQuery(slot, true, slot.remote);
        if (expected.text.empty())
            ExpectLine(Fuzz::ConnectionLine("Connected", slot.local, slot.remote));
        return expected;
    }

    void Accept(Slot& slot) {
        const std::size_t target = input_.Below(4);
        if (&slots_[target] == &slot) return;
        Drop(slots_[target]);
        VelNet::SocketAddress remote(Octets(9, 9, 9, 9), 9);
        const int failure = TakeFailure();
        if (failure != 0) return FailToAccept(slot, failure, remote);
        const Endpoint peer = TakeEndpoint();
        Slot accepted;
        accepted.state = State::Connected;
        accepted.handle = NextAcceptedHandle();
        On::Accept().Returns(std::stoull(accepted.handle), peer.host, PortOf(peer));
        ExpectCall("accept(" + slot.handle + ", 16)");
        const Thrown expected = ExpectQuery(slot, false, accepted.local);
        if (expected.text.empty()) accepted.remote = peer;
        if (expected.text.empty())
            ExpectLine(Fuzz::ConnectionLine("Connected", accepted.local, accepted.remote));
        else
            ExpectClosed(accepted);
        Fuzz::ExpectOutcome("Accept", expected,
                            [&] { accepted.socket = slot.socket->Accept(remote); });
        ExpectAddress("the peer", peer, remote);
        if (expected.text.empty()) slots_[target] = std::move(accepted);
    }

    void FailToAccept(Slot& slot, int failure, VelNet::SocketAddress& remote) {
        On::Accept().Fails(failure);
        ExpectCall("accept(" + slot.handle + ", 16)", failure);
        const bool wouldBlock = failure == 10035 || failure == 11;
        const Thrown expected =
            wouldBlock ? Thrown()
                       : Failing("VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection",
                                 failure);
        Fuzz::ExpectOutcome("Accept", expected, [&] {
            const auto accepted = slot.socket->Accept(remote);
            Expect("whether there is a socket", false, static_cast<bool>(accepted));
        });
        ExpectAddress("the peer of none", {.host = "9.9.9.9", .port = 9}, remote);
    }

    void Send(Slot& slot) {
        const std::string bytes(input_.Line());
        const Transfer transfer = ExpectSend(slot.handle, bytes);
        Thrown expected;
        if (transfer.failure != 0 && transfer.failure != 10035)
            expected =
                Failing("VelNet::SocketImpl::Send() - FAIL. The ::send failed", transfer.failure);
        if (transfer.failure == 0) ExpectTransfer("Sent", slot, transfer.bytes);
        ScriptedModel::Send(*slot.socket, bytes, transfer, expected);
    }

    void Receive(Slot& slot) {
        const Transfer transfer = ExpectRecv(slot.handle);
        const Thrown expected = ExpectReceived(slot, transfer.bytes, transfer.failure);
        ScriptedModel::Receive(*slot.socket, transfer, expected);
    }

    Thrown ExpectReceived(const Slot& slot, const std::string& bytes, int failure) {
        if (failure != 0)
            return Failing("VelNet::SocketImpl::Receive() - FAIL. The ::recv failed", failure);
        if (bytes.empty()) {
            ExpectLine(Fuzz::ErrorLine(Fuzz::EndOfStream()));
            return Fuzz::EndOfStream();
        }
        ExpectTransfer("Received", slot, bytes);
        return {};
    }

    void Close(Slot& slot) {
        ExpectClosed(slot);
        slot.socket->Close();
    }

    void Drop(Slot& slot) {
        if (slot.socket && slot.IsValid()) ExpectClosed(slot);
        slot = {};
    }

    void SetOption(const Slot& slot, int option, const std::string& value, const std::string& text,
                   const std::function<void()>& operation) {
        const int failure = TakeFailure();
        if (failure != 0) On::Setsockopt().Fails(failure);
        ExpectCall("setsockopt(" + slot.handle + ", 0xFFFF, 0x" + HexNumber(option) + ", " + value +
                       ", 4)",
                   failure);
        if (failure != 0) Failing("VelNet::SocketImpl::" + text, failure);
        Fuzz::ExpectOutcome("an option", {}, operation);
    }

    void SetReceiveTimeout(Slot& slot) {
        const int value = input_.Number();
        SetOption(slot, 0x1006, std::to_string(value),
                  "SetReceiveTimeout() - FAIL. Cannot set Receive Timeout",
                  [&] { slot.socket->SetReceiveTimeout(static_cast<unsigned int>(value)); });
    }
    void SetSendTimeout(Slot& slot) {
        const int value = input_.Number();
        SetOption(slot, 0x1005, std::to_string(value),
                  "SetReceiveTimeout() - FAIL. Cannot set Send Timeout",
                  [&] { slot.socket->SetSendTimeout(static_cast<unsigned int>(value)); });
    }
    void SetReuse(Slot& slot) {
        SetOption(slot, 4, "1", "SetReuseAddress() - FAIL. Cannot set Reuse Address",
                  [&] { slot.socket->SetReuseAddress(); });
    }

    void SetNonBlocking(Slot& slot) { CheckNonBlocking(*slot.socket, slot.handle); }
    void IsDataAvailable(Slot& slot) { CheckAvailable(*slot.socket, slot.handle); }
    void GetStatus(Slot& slot) { CheckStatus(*slot.socket, slot.handle, slot.state); }

    void GetLocalAddress(Slot& slot) { Query(slot, false); }
    void GetRemoteAddress(Slot& slot) { Query(slot, true); }
    void Query(Slot& slot, bool ofPeer) {
        Endpoint told;
        const Thrown expected = ExpectQuery(slot, ofPeer, told);
        Fuzz::ExpectOutcome("an address", expected, [&] {
            const auto address =
                ofPeer ? slot.socket->GetRemoteAddress() : slot.socket->GetLocalAddress();
            ExpectAddress("an address", told, address);
        });
    }

    void SwitchRouter(Slot&) { SwitchACategory(); }

    void CompareHandles(Slot& slot) {
        for (const Slot& other : slots_)
            if (other.socket)
                Expect("IsSameSocket", slot.handle == other.handle,
                       slot.socket->IsSameSocket(*other.socket.Get()));
    }
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    Fuzz::PlayScene([&] { Program(Fuzz::Input(data, size)).Run(); });
    return 0;
}
