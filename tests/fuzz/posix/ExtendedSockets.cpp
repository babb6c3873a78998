// Four extended sockets, IPv4 and IPv6, that talk to each other over the loopback interface, held
// against a model of what Winsock answers, of the bytes on their way, of the texts that a socket
// keeps and of the records. The input is a program. What would wait without end, and what Winsock
// leaves to chance, is left out.
#include <array>

#include "fuzz/Program.h"
#include "fuzz/posix/ExtendedSlot.h"

namespace {

using namespace Fuzz;
using VelNet::Socket;
using VelNet::SocketXt;

class Program : public LoopbackModel {
public:
    using LoopbackModel::LoopbackModel;

    void Compare() {
        for (XtSlot& slot : slots_)
            if (slot.socket) Inspect(slot);
        LoopbackModel::Compare();
    }

    void Run() {
        using Do = Operation<Program, XtSlot>;
        static constexpr std::array Operations = {
            Do{&Program::Create, false}, Do{&Program::Bind},   Do{&Program::Listen},
            Do{&Program::Connect},       Do{&Program::Accept}, Do{&Program::Send},
            Do{&Program::Receive},       Do{&Program::SendTo}, Do{&Program::RecvFrom},
            Do{&Program::Close},         Do{&Program::Drop},   Do{&Program::Inspect},
            Do{&Program::SetNonBlocking}};
        Play(*this, input_, slots_, Operations, &Program::Drop);
    }

private:
    // What the operation throws; error 0 stands for nothing.
    Thrown Failing(const std::string& operation, const std::string& description,
                   const std::string& call, const TextEnd& texts, int error) {
        return LoopbackModel::Failing(
            ExtendedHead("SocketXtImpl::" + operation, description, call, texts), error);
    }

    void Create(XtSlot& slot) {
        Drop(slot);
        const unsigned int kind = input_.Below(6);
        slot.isDatagram = kind % 3 == 0;
        slot.isIpv6 = kind / 3 == 1;
        slot.socket = VelNet::CreateSocketXt(
            slot.isDatagram ? Socket::SOCKET_DATAGRAM : Socket::SOCKET_STREAM,
            slot.isDatagram ? Socket::PROTOCOL_UDP : Socket::PROTOCOL_TCP,
            slot.isIpv6 ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4);
        slot.socket->SetReceiveTimeout(LongestWait * 1000);
        slot.state = State::Created;
    }

    // A datagram socket counts as connected then.
    void Bind(XtSlot& slot) {
        const bool byKind = input_.Flag();
        TryToBind(slot, slot.Host(), byKind, slot.port.empty() ? 0 : 10022);
        if (slot.state == State::Closed || !slot.port.empty()) return;
        slot.state = slot.isDatagram ? State::Connected : State::Bound;
        slot.port = PortOf(*slot.socket);
        slot.local = {slot.Host(), "0"};
    }

    void TryToBind(XtSlot& slot, const char* host, bool byKind, int error) {
        const Thrown expected = Failing("Bind", "cannot bind socket to local address", "::bind",
                                        {host, "0"}, slot.UnlessClosed(error));
        ExpectOutcome("Bind", expected, [&] {
            if (byKind)
                slot.socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
            else
                slot.socket->Bind(host, "0");
        });
    }

    void Listen(XtSlot& slot) {
        int error = slot.port.empty() ? 10022 : 0;
        if (slot.state == State::Connected) error = 10056;
        if (slot.isDatagram) error = 10045;
        error = slot.UnlessClosed(error);
        const Thrown expected =
            Failing("Listen", "cannot listen on socket", "::listen", slot.local, error);
        ExpectOutcome("Listen", expected,
                      [&] { Expect("Listen's result", 0, slot.socket->Listen()); });
        if (error == 0) slot.state = State::Listening;
    }

    void Connect(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        if (&target == &slot || target.port.empty()) return;
        if (slot.isIpv6 != target.isIpv6) return ConnectAbroad(slot, target);
        if (slot.isDatagram) return ConnectDatagrams(slot, target);
        int error = slot.state == State::Connected ? 10056 : 0;
        if (slot.state == State::Listening) error = 10022;
        error = slot.UnlessClosed(error);
        if (slot.end && slot.end->HasLostPeer()) return;
        if (error == 0 && (slot.isNonBlocking || !HasRoom(target))) return;
        TryToConnect(slot, target.Host(), target.port, error);
        if (error != 0) return;
        const auto [end, other] = NewStream();
        slot.end = end;
        target.clients.push_back(other);
        target.clientPorts.push_back(slot.port);
    }

    void ConnectAbroad(XtSlot& slot, const XtSlot& target) {
        if (slot.state == State::Created || slot.state == State::Bound)
            TryToConnect(slot, target.Host(), target.port, slot.ForeignError());
        if (slot.state == State::Closed) TryToConnect(slot, target.Host(), target.port, 10038);
    }

    // What has come from elsewhere is kept or not, as the system likes.
    void ConnectDatagrams(XtSlot& slot, const XtSlot& target) {
        if (!target.isDatagram || slot.state == State::Closed || !slot.datagrams.empty()) return;
        TryToConnect(slot, target.Host(), target.port, 0);
        slot.peerPort = target.port;
    }

    // The own end's texts are kept even if the call fails.
    void TryToConnect(XtSlot& slot, const std::string& host, const std::string& port, int error) {
        slot.local = {ThisComputer(slot), "0"};
        const Thrown expected =
            Failing("Connect", "cannot connect local socket to a remote address", "::connect",
                    Joined(slot.local, {host, port}), error);
        ExpectOutcome("Connect", expected,
                      [&] { slot.socket->Connect(host.c_str(), port.c_str()); });
        if (error != 0) return;
        slot.state = State::Connected;
        if (!slot.port.empty()) Expect("the port stays", slot.port, PortOf(*slot.socket));
        slot.port = PortOf(*slot.socket);
        slot.remote = {host, port};
        Record(ConnectionLine("Connected", slot.local, slot.remote));
    }

    void Accept(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        if (&target == &slot) return;
        const bool isListening = slot.state == State::Listening;
        if (isListening && !slot.clients.empty()) return AcceptClient(slot, target);
        if (isListening && !slot.isNonBlocking) return;
        int error = isListening ? 10035 : 10022;
        if (slot.isDatagram) error = 10045;
        const Thrown expected =
            Failing("Accept", "cannot accept on local socket from remote address", "::accept",
                    slot.local, slot.UnlessClosed(error));
        VelBase::ReturnPtrI<SocketXt> accepted;
        VelBase::ReturnString host("kept");
        VelBase::ReturnString port("kept");
        ExpectOutcome("Accept", expected, [&] { slot.socket->Accept(accepted, host, port); });
        Expect<std::string>("the texts", "kept kept",
                            host.c_str() + std::string(" ") + port.c_str());
        Expect("whether there is a socket", false, static_cast<bool>(accepted));
    }

    // The listener keeps the peer's texts, and the new socket has none.
    void AcceptClient(XtSlot& listener, XtSlot& target) {
        Drop(target);
        WaitUntilReadable(*listener.socket);
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        listener.socket->Accept(target.socket, host, port);
        target.state = State::Connected;
        target.isIpv6 = listener.isIpv6;
        target.isNonBlocking = listener.isNonBlocking;
        target.port = listener.port;
        target.end = listener.clients.front();
        listener.remote = {listener.Host(), listener.clientPorts.front()};
        listener.clients.pop_front();
        listener.clientPorts.pop_front();
        Expect("the peer's host", listener.remote.host, std::string(host.c_str()));
        Expect("the peer's port", listener.remote.port, std::string(port.c_str()));
        Record(ConnectionLine("Connected", listener.local, listener.remote));
        target.socket->SetReceiveTimeout(LongestWait * 1000);
    }

    // Where a datagram goes that is sent without an address, if there is somebody who takes it.
    XtSlot* TakerOf(const XtSlot& slot) {
        for (XtSlot& other : slots_)
            if (!slot.peerPort.empty() && other.port == slot.peerPort && other.Takes(slot))
                return &other;
        return nullptr;
    }

    void Send(XtSlot& slot) {
        const std::string bytes(input_.Line());
        if (slot.isDatagram && !slot.peerPort.empty()) return SendDatagram(slot, bytes);
        int error = slot.end ? 0 : 10057;
        if (slot.end && slot.end->isPeerClosed) return;
        if (slot.end && slot.end->isReset) {
            WaitUntilReadable(*slot.socket);
            error = 10054;
        }
        error = slot.UnlessClosed(error);
        TryToSend(slot, bytes, error);
        if (error == 0) slot.end->peer.lock()->waiting += bytes;
    }

    void SendDatagram(XtSlot& slot, const std::string& bytes) {
        XtSlot* const taker = TakerOf(slot);
        if (taker == nullptr) return;
        TryToSend(slot, bytes, 0);
        taker->datagrams.push_back({bytes, {slot.Host(), slot.port}});
    }

    void TryToSend(XtSlot& slot, const std::string& bytes, int error) {
        const Thrown expected = Failing("Send", "send on socket failed", "::send",
                                        Joined(slot.local, slot.remote), error);
        if (error == 0) Record(TransferLines("Sent", bytes, slot.local, slot.remote));
        const auto size = static_cast<int>(bytes.size());
        ExpectOutcome("Send", expected, [&] {
            Expect("the bytes sent", size, slot.socket->Send(bytes.data(), size));
        });
    }

    void Receive(XtSlot& slot) {
        const int room = static_cast<int>(1 + input_.Byte());
        if (!slot.datagrams.empty()) return ReceiveDatagram(slot, room);
        if (slot.end && !slot.end->waiting.empty()) return ReceiveBytes(slot, room);
        if (slot.end && slot.end->isPeerClosed && !slot.end->isReset) return ReceiveEnd(slot);
        int error = slot.end ? 10035 : 10057;
        if (slot.isDatagram) error = slot.port.empty() ? 10022 : 10035;
        if (slot.end && slot.end->isReset) error = 10054;
        error = slot.UnlessClosed(error);
        if (error == 10035 && !slot.isNonBlocking) return;
        if (error == 10054) WaitUntilReadable(*slot.socket);
        FailToReceive(slot, error);
    }

    void FailToReceive(XtSlot& slot, int error, int room = 1) {
        const Thrown expected = Failing("Receive", "recieve on socket failed", "::recv",
                                        Joined(slot.local, slot.remote), error);
        std::string buffer(static_cast<std::size_t>(room), '?');
        ExpectOutcome("Receive", expected,
                      [&] { static_cast<void>(slot.socket->Receive(buffer.data(), room)); });
    }

    // An empty datagram is taken for one, too. The host is shown with a colon.
    void ReceiveEnd(XtSlot& slot) {
        WaitUntilReadable(*slot.socket);
        const Thrown expected = Failing(
            "Receive", "::recv could not be completed because the connection has been closed",
            "::recv", {slot.local.host + ":", slot.local.port}, -1);
        char byte = '?';
        ExpectOutcome("Receive", expected,
                      [&] { static_cast<void>(slot.socket->Receive(&byte, 1)); });
    }

    // How much of it comes at once is the system's affair.
    void ReceiveBytes(XtSlot& slot, int room) {
        WaitUntilReadable(*slot.socket);
        std::string buffer(static_cast<std::size_t>(room), '?');
        buffer.resize(static_cast<std::size_t>(slot.socket->Receive(buffer.data(), room)));
        Expect("the bytes received", slot.end->waiting.substr(0, buffer.size()), buffer);
        slot.end->waiting.erase(0, buffer.size());
        Record(TransferLines("Received", buffer, slot.local, slot.remote));
    }

    static Datagram TakeFirst(XtSlot& slot) {
        WaitUntilReadable(*slot.socket);
        const Datagram datagram = slot.datagrams.front();
        slot.datagrams.pop_front();
        return datagram;
    }

    void ReceiveDatagram(XtSlot& slot, int room) {
        if (slot.datagrams.front().bytes.empty()) {
            ReceiveEnd(slot);
            return slot.datagrams.pop_front();
        }
        const std::string bytes = TakeFirst(slot).bytes;
        if (bytes.size() > static_cast<std::size_t>(room)) return FailToReceive(slot, 10040, room);
        std::string buffer(static_cast<std::size_t>(room), '?');
        buffer.resize(static_cast<std::size_t>(slot.socket->Receive(buffer.data(), room)));
        Expect("the datagram received", bytes, buffer);
        Record(TransferLines("Received", bytes, slot.local, slot.remote));
    }

    void SendTo(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        const std::string bytes(input_.Line());
        if (slot.state == State::Closed) return TryToSendTo(slot, target, bytes, 10038);
        if (!slot.isDatagram && !slot.end) return TryToSendTo(slot, target, bytes, 10057);
        if (!slot.isDatagram || !slot.peerPort.empty() || target.port.empty()) return;
        if (slot.isIpv6 != target.isIpv6)
            return TryToSendTo(slot, target, bytes, slot.ForeignError());
        if (!target.Takes(slot)) return;
        TryToSendTo(slot, target, bytes, 0);
        slot.port = PortOf(*slot.socket);
        target.datagrams.push_back({bytes, {slot.Host(), slot.port}});
    }

    // A record has neither of the socket's own texts.
    void TryToSendTo(XtSlot& slot, const XtSlot& target, const std::string& bytes, int error) {
        const TextEnd to = {target.Host(), target.port.empty() ? "9" : target.port};
        const Thrown expected =
            Failing("SendTo", "cannot sendto using connectionless socket", "::sendto", to, error);
        if (error == 0)
            Record(TransferLines("Sendto", bytes, {ThisComputer(slot), "Random Port"}, to));
        const auto size = static_cast<int>(bytes.size());
        const bool byKind = input_.Flag() && slot.isIpv6 == target.isIpv6;
        ExpectOutcome("SendTo", expected, [&] {
            const int sent =
                byKind ? slot.socket->SendTo(bytes.data(), size, VelNet::SPECIAL_LOOPBACK,
                                             to.port.c_str())
                       : slot.socket->SendTo(bytes.data(), size, to.host.c_str(), to.port.c_str());
            Expect("the bytes sent", size, sent);
        });
    }

    void RecvFrom(XtSlot& slot) {
        const int room = static_cast<int>(1 + input_.Byte());
        if (!slot.isDatagram && slot.end) return;
        int error = slot.isDatagram ? 10022 : 10057;
        if (!slot.port.empty() && slot.isDatagram) error = 10035;
        error = slot.UnlessClosed(error);
        if (slot.datagrams.empty() && error == 10035 && !slot.isNonBlocking) return;
        Datagram datagram;
        if (!slot.datagrams.empty()) {
            datagram = TakeFirst(slot);
            error = datagram.bytes.size() > static_cast<std::size_t>(room) ? 10040 : 0;
        }
        const Thrown expected = Failing("RecvFrom", "cannot recvfrom using connectionless socket",
                                        "::recvfrom", {"no-ip", "no-port"}, error);
        if (error == 0)
            Record(TransferLines("Recvfrom", datagram.bytes, slot.local, datagram.sender));
        ExpectOutcome("RecvFrom", expected, [&] { TakeDatagram(slot, room, datagram); });
    }

    static void TakeDatagram(XtSlot& slot, int room, const Datagram& expected) {
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        std::string buffer(static_cast<std::size_t>(room), '?');
        const int count = slot.socket->RecvFrom(buffer.data(), room, host, port);
        Expect("the datagram", expected.bytes, buffer.substr(0, static_cast<std::size_t>(count)));
        Expect("the sender's host", expected.sender.host, std::string(host.c_str()));
        Expect("the sender's port", expected.sender.port, std::string(port.c_str()));
    }

    void Inspect(XtSlot& slot) {
        Expect("IsValid", slot.state != State::Closed, slot.socket->IsValid());
        Expect("GetAddressFamily", slot.isIpv6 ? SocketXt::FAMILY_IPV6 : SocketXt::FAMILY_IPV4,
               slot.socket->GetAddressFamily());
        const bool hasBytes = slot.end && !slot.end->waiting.empty();
        if (hasBytes || !slot.datagrams.empty()) WaitUntilReadable(*slot.socket);
        // What counts of several datagrams, one of them empty, is the system's affair.
        const bool isEmpty = !slot.datagrams.empty() && slot.datagrams.front().bytes.empty();
        if (isEmpty && slot.datagrams.size() > 1) return;
        const bool hasDatagram = !slot.datagrams.empty() && !isEmpty;
        int status = slot.state == State::Listening ? 1 : 0;
        if (slot.state == State::Connected) status = hasBytes || hasDatagram ? 2 : 3;
        Expect("GetStatus", status, slot.socket->GetStatus());
    }

    void SetNonBlocking(XtSlot& slot) {
        const bool isOpen = slot.state != State::Closed;
        Expect("SetNonBlocking", isOpen, slot.socket->SetNonBlocking());
        slot.isNonBlocking = isOpen;
    }

    // What the model knows of a socket that goes away. It keeps its texts.
    void ExpectClosed(XtSlot& slot) {
        Record(ConnectionLine("Disconnected", slot.local, slot.remote));
        PartFromAll(slot);
        XtSlot closed;
        closed.socket = std::move(slot.socket);
        closed.isDatagram = slot.isDatagram;
        closed.isIpv6 = slot.isIpv6;
        closed.local = slot.local;
        closed.remote = slot.remote;
        slot = std::move(closed);
    }

    void Close(XtSlot& slot) {
        const bool isOpen = slot.state != State::Closed;
        const Thrown expected = Failing("Close", "cannot close a socket", "::getaddrinfo",
                                        slot.local, isOpen ? 0 : 10038);
        if (isOpen) ExpectClosed(slot);
        ExpectOutcome("Close", expected, [&] { slot.socket->Close(); });
    }

    void Drop(XtSlot& slot) {
        if (slot.socket && slot.state != State::Closed) ExpectClosed(slot);
        slot = {};
    }

    std::array<XtSlot, 4> slots_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const VelNet::SocketInitialization layer;
    Program(Input(data, size)).Run();
    return 0;
}
