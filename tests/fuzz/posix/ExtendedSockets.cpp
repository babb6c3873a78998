// Four extended sockets that talk to each other over the loopback interface, held against a model
// of what Winsock answers, of the bytes on their way, of the texts that a socket keeps and of the
// records. The input is a program. What would wait without end, and what Winsock leaves to chance,
// is left out.
#include <VelNet/SocketCollection.h>

#include <array>

#include "fuzz/posix/ExtendedModel.h"

namespace {

using namespace Fuzz;
using VelNet::Socket;
using VelNet::SocketXt;

constexpr unsigned int LongestWait = 60;  // seconds

class Program {
public:
    explicit Program(Input input) : input_(input) {}

    void Run() {
        while (!input_.IsEmpty() && steps_++ < 50)
            Step();
        for (XtSlot& slot : slots_)
            Drop(slot);
        Expect("the records", log_, recorder_.log);
    }

private:
    using Operation = void (Program::*)(XtSlot&);

    void Step() {
        static constexpr std::array Operations = {
            &Program::Create,   &Program::Bind,  &Program::Listen,  &Program::Connect,
            &Program::Accept,   &Program::Send,  &Program::Receive, &Program::SendTo,
            &Program::RecvFrom, &Program::Close, &Program::Drop,    &Program::Inspect};
        const Operation operation =
            Operations[input_.Below(static_cast<unsigned int>(Operations.size()))];
        XtSlot& slot = slots_[input_.Below(4)];
        if (slot.socket || operation == &Program::Create) (this->*operation)(slot);
    }

    // What the operation throws; error 0 stands for nothing.
    Thrown Failing(const std::string& operation, const std::string& ends, int error) {
        if (error == 0) return {};
        const Thrown failure =
            FailureOf("VelNet::SocketXtImpl::" + operation + " , " + ends + " ", error);
        log_.push_back(ErrorLine(failure));
        return failure;
    }

    static std::string LocalText(const XtSlot& slot) {
        return slot.local.host.empty() ? "" : slot.local.host + " : " + slot.local.port;
    }

    static std::string BothTexts(const XtSlot& slot) {
        return slot.local.host + ":" + slot.local.port + " : " + slot.remote.host + ":" +
               slot.remote.port;
    }

    static TextEnd ThisComputer(const XtSlot& slot, const char* port) {
        return {slot.socket->GetSpecialAddress(VelNet::SPECIAL_THIS_MACHINE, SocketXt::FAMILY_IPV4)
                    .c_str(),
                port};
    }

    static void WaitUntilReadable(const XtSlot& slot) {
        VelNet::SocketCollection* const set = VelNet::CreateSocketCollection();
        set->Add(slot.socket.Get(), VelNet::EVENT_READ);
        VelNet::SocketCollection* const ready = set->Select(LongestWait);
        Expect("whether there is something to read", true, ready != nullptr);
        ready->Destroy();
        set->Destroy();
    }

    void Create(XtSlot& slot) {
        Drop(slot);
        slot = {};
        slot.isDatagram = input_.Below(3) == 0;
        slot.socket = VelNet::CreateSocketXt(
            slot.isDatagram ? Socket::SOCKET_DATAGRAM : Socket::SOCKET_STREAM,
            slot.isDatagram ? Socket::PROTOCOL_UDP : Socket::PROTOCOL_TCP, SocketXt::FAMILY_IPV4);
        slot.socket->SetReceiveTimeout(LongestWait * 1000);
        slot.state = State::Created;
    }

    // A datagram socket counts as connected then.
    void Bind(XtSlot& slot) {
        int error = slot.port.empty() ? 0 : 10022;
        if (slot.state == State::Closed) error = 10038;
        const Thrown expected = Failing("Bind , cannot bind socket to local address , ::bind",
                                        std::string(Host) + " : 0", error);
        const bool byKind = input_.Flag();
        ExpectOutcome("Bind", expected, [&] {
            if (byKind)
                slot.socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
            else
                slot.socket->Bind(Host, "0");
        });
        if (error != 0) return;
        slot.state = slot.isDatagram ? State::Connected : State::Bound;
        slot.port = PortOf(*slot.socket);
        slot.local = {Host, "0"};
    }

    void Listen(XtSlot& slot) {
        int error = slot.port.empty() ? 10022 : 0;
        if (slot.state == State::Connected) error = 10056;
        if (slot.isDatagram) error = 10045;
        if (slot.state == State::Closed) error = 10038;
        const Thrown expected =
            Failing("Listen , cannot listen on socket , ::listen", LocalText(slot), error);
        ExpectOutcome("Listen", expected,
                      [&] { Expect("Listen's result", 0, slot.socket->Listen()); });
        if (error == 0) slot.state = State::Listening;
    }

    void Connect(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        if (&target == &slot || target.port.empty() || slot.isDatagram) return;
        int error = slot.state == State::Connected ? 10056 : 0;
        if (slot.state == State::Listening) error = 10022;
        if (slot.state == State::Closed) error = 10038;
        if (slot.end && (slot.end->isPeerClosed || slot.end->isReset)) return;
        // A backlog of two holds two; what becomes of a third is the system's affair.
        const bool hasRoom = target.state == State::Listening && target.clients.size() < 2;
        if (error == 0 && !hasRoom) return;
        // Kept even if the call fails.
        slot.local = ThisComputer(slot, "0");
        TryToConnect(slot, target, error);
    }

    void TryToConnect(XtSlot& slot, XtSlot& target, int error) {
        const Thrown expected =
            Failing("Connect , cannot connect local socket to a remote address , ::connect",
                    slot.local.host + ":0 : " + Host + ":" + target.port, error);
        ExpectOutcome("Connect", expected,
                      [&] { slot.socket->Connect(Host, target.port.c_str()); });
        if (error != 0) return;
        slot.state = State::Connected;
        slot.port = PortOf(*slot.socket);
        slot.remote = {Host, target.port};
        log_.push_back(Line("Connection Trace", "Connected", slot.local, slot.remote));
        slot.end = std::make_shared<End>();
        const auto other = std::make_shared<End>();
        slot.end->peer = other;
        other->peer = slot.end;
        target.clients.push_back(other);
        target.clientPorts.push_back(slot.port);
    }

    void Accept(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        if (&target == &slot) return;
        if (slot.state == State::Listening) {
            if (!slot.clients.empty()) AcceptClient(slot, target);
            return;
        }
        int error = slot.isDatagram ? 10045 : 10022;
        if (slot.state == State::Closed) error = 10038;
        const Thrown expected =
            Failing("Accept , cannot accept on local socket from remote address , ::accept",
                    LocalText(slot), error);
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
        WaitUntilReadable(listener);
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        target = {};
        listener.socket->Accept(target.socket, host, port);
        target.state = State::Connected;
        target.port = listener.port;
        target.end = listener.clients.front();
        listener.remote = {Host, listener.clientPorts.front()};
        listener.clients.pop_front();
        listener.clientPorts.pop_front();
        Expect("the peer's host", listener.remote.host, std::string(host.c_str()));
        Expect("the peer's port", listener.remote.port, std::string(port.c_str()));
        log_.push_back(Line("Connection Trace", "Connected", listener.local, listener.remote));
        target.socket->SetReceiveTimeout(LongestWait * 1000);
    }

    void ExpectTransfer(const std::string& verb, const TextEnd& local, const TextEnd& remote,
                        std::string_view bytes) {
        const std::string event = verb + " " + std::to_string(bytes.size()) + " bytes";
        log_.push_back(Line("Packet Trace", event, local, remote));
        log_.push_back(
            Line("Verbose Packet Trace", event, local, remote, ", data: " + Hexadecimal(bytes)));
    }

    void Send(XtSlot& slot) {
        const std::string bytes(input_.Line());
        if (slot.isDatagram && slot.state != State::Closed) return;
        int error = slot.state == State::Connected ? 0 : 10057;
        if (slot.state == State::Closed) error = 10038;
        if (error == 0 && slot.end->isPeerClosed) return;
        if (error == 0 && slot.end->isReset) {
            WaitUntilReadable(slot);
            error = 10054;
        }
        const Thrown expected =
            Failing("Send , send on socket failed , ::send", BothTexts(slot), error);
        if (error == 0) ExpectTransfer("Sent", slot.local, slot.remote, bytes);
        const auto size = static_cast<int>(bytes.size());
        ExpectOutcome("Send", expected, [&] {
            Expect("the bytes sent", size, slot.socket->Send(bytes.data(), size));
        });
        if (error == 0) slot.end->peer.lock()->waiting += bytes;
    }

    void Receive(XtSlot& slot) {
        const int room = static_cast<int>(1 + input_.Byte());
        if (slot.isDatagram && slot.state != State::Closed) return;
        if (slot.end && !slot.end->waiting.empty()) return ReceiveBytes(slot, room);
        if (slot.end && slot.end->isPeerClosed && !slot.end->isReset) return ReceiveEnd(slot);
        int error = slot.end ? 10035 : 10057;
        if (slot.end && slot.end->isReset) error = 10054;
        if (slot.state == State::Closed) error = 10038;
        if (error == 10035) return;
        if (error == 10054) WaitUntilReadable(slot);
        FailToReceive(
            slot, Failing("Receive , recieve on socket failed , ::recv", BothTexts(slot), error));
    }

    static void FailToReceive(XtSlot& slot, const Thrown& expected) {
        char byte = '?';
        ExpectOutcome("Receive", expected,
                      [&] { static_cast<void>(slot.socket->Receive(&byte, 1)); });
    }

    // The host with a colon, then the port.
    void ReceiveEnd(XtSlot& slot) {
        WaitUntilReadable(slot);
        FailToReceive(
            slot, Failing("Receive , ::recv could not be completed because the connection has been "
                          "closed , ::recv",
                          slot.local.host + ": : " + slot.local.port, 0xFFFF));
    }

    // How much of it comes at once is the system's affair.
    void ReceiveBytes(XtSlot& slot, int room) {
        WaitUntilReadable(slot);
        std::string buffer(static_cast<std::size_t>(room), '?');
        buffer.resize(static_cast<std::size_t>(slot.socket->Receive(buffer.data(), room)));
        Expect("the bytes received", slot.end->waiting.substr(0, buffer.size()), buffer);
        slot.end->waiting.erase(0, buffer.size());
        ExpectTransfer("Received", slot.local, slot.remote, buffer);
    }

    // A record has neither of the socket's own texts.
    void SendTo(XtSlot& slot) {
        XtSlot& target = slots_[input_.Below(4)];
        const std::string bytes(input_.Line());
        if (!slot.isDatagram || !target.isDatagram || target.port.empty()) return;
        const int error = slot.state == State::Closed ? 10038 : 0;
        const Thrown expected =
            Failing("SendTo , cannot sendto using connectionless socket , ::sendto",
                    Host + (" : " + target.port), error);
        if (error == 0)
            ExpectTransfer("Sendto", ThisComputer(slot, "Random Port"), {Host, target.port}, bytes);
        const auto size = static_cast<int>(bytes.size());
        ExpectOutcome("SendTo", expected, [&] {
            Expect("the bytes sent", size,
                   slot.socket->SendTo(bytes.data(), size, Host, target.port.c_str()));
        });
        if (error != 0) return;
        slot.port = PortOf(*slot.socket);
        target.datagrams.push_back({bytes, slot.port});
    }

    void RecvFrom(XtSlot& slot) {
        const int room = static_cast<int>(1 + input_.Byte());
        if (slot.state != State::Closed && slot.datagrams.empty()) return;
        int error = slot.state == State::Closed ? 10038 : 0;
        Datagram datagram;
        if (error == 0) {
            WaitUntilReadable(slot);
            datagram = slot.datagrams.front();
            slot.datagrams.pop_front();
            if (datagram.bytes.size() > static_cast<std::size_t>(room)) error = 10040;
        }
        const Thrown expected =
            Failing("RecvFrom , cannot recvfrom using connectionless socket , ::recvfrom",
                    "no-ip : no-port", error);
        if (error == 0)
            ExpectTransfer("Recvfrom", slot.local, {Host, datagram.senderPort}, datagram.bytes);
        ExpectOutcome("RecvFrom", expected, [&] { TakeDatagram(slot, room, datagram); });
    }

    static void TakeDatagram(XtSlot& slot, int room, const Datagram& expected) {
        VelBase::ReturnString host;
        VelBase::ReturnString port;
        std::string buffer(static_cast<std::size_t>(room), '?');
        const int count = slot.socket->RecvFrom(buffer.data(), room, host, port);
        Expect("the datagram", expected.bytes, buffer.substr(0, static_cast<std::size_t>(count)));
        Expect("the sender's host", std::string(Host), std::string(host.c_str()));
        Expect("the sender's port", expected.senderPort, std::string(port.c_str()));
    }

    void Inspect(XtSlot& slot) {
        Expect("IsValid", slot.state != State::Closed, slot.socket->IsValid());
        Expect("GetAddressFamily", SocketXt::FAMILY_IPV4, slot.socket->GetAddressFamily());
        const bool hasBytes = slot.end && !slot.end->waiting.empty();
        if (hasBytes || !slot.datagrams.empty()) WaitUntilReadable(slot);
        // What counts of several datagrams, one of them empty, is the system's affair.
        const bool isEmpty = !slot.datagrams.empty() && slot.datagrams.front().bytes.empty();
        if (isEmpty && slot.datagrams.size() > 1) return;
        const bool hasDatagram = !slot.datagrams.empty() && !isEmpty;
        int status = slot.state == State::Listening ? 1 : 0;
        if (slot.state == State::Connected) status = hasBytes || hasDatagram ? 2 : 3;
        Expect("GetStatus", status, slot.socket->GetStatus());
    }

    // The other end learns of an end with bytes that nobody received as of a reset.
    static void Part(const End& end, bool isPending) {
        const std::shared_ptr<End> peer = end.peer.lock();
        if (!peer) return;
        const bool resets = !end.waiting.empty() || isPending;
        (resets ? peer->isReset : peer->isPeerClosed) = true;
    }

    // What the model knows of a socket that goes away. It keeps its texts.
    void ExpectClosed(XtSlot& slot) {
        log_.push_back(Line("Connection Trace", "Disconnected", slot.local, slot.remote));
        if (slot.end && !slot.end->waiting.empty()) WaitUntilReadable(slot);
        if (slot.end) Part(*slot.end, false);
        if (!slot.clients.empty()) WaitUntilReadable(slot);
        for (const auto& client : slot.clients)
            Part(*client, true);
        slot.state = State::Closed;
        slot.port.clear();
        slot.end.reset();
        slot.clients.clear();
        slot.clientPorts.clear();
        slot.datagrams.clear();
    }

    void Close(XtSlot& slot) {
        const bool isOpen = slot.state != State::Closed;
        const Thrown expected = Failing("Close , cannot close a socket , ::getaddrinfo",
                                        LocalText(slot), isOpen ? 0 : 10038);
        if (isOpen) ExpectClosed(slot);
        ExpectOutcome("Close", expected, [&] { slot.socket->Close(); });
    }

    void Drop(XtSlot& slot) {
        if (slot.socket && slot.state != State::Closed) ExpectClosed(slot);
        slot.socket = {};
    }

    Input input_;
    Recorder recorder_;
    std::array<XtSlot, 4> slots_;
    Log log_;
    int steps_ = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const VelNet::SocketInitialization layer;
    Program(Input(data, size)).Run();
    return 0;
}
