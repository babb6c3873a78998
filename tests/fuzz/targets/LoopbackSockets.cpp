// Four classic sockets that talk to each other over the loopback interface, held against a model of
// what Winsock answers, of the bytes on their way and of the records. The input is a program. What
// would wait without end, and what Winsock leaves to chance, is left out.
#include <array>

#include "fuzz/LoopbackModel.h"
#include "fuzz/Program.h"

namespace {

using namespace Fuzz;
using VelNet::Octets;
using VelNet::Socket;

// A socket, and what is known of it.
struct Slot {
    VelBase::ReturnPtrI<Socket> socket;
    State state = State::Closed;
    bool isDatagram = false;
    bool isNonBlocking = false;
    int port = 0;                              // 0 while it is not bound
    Endpoint local, remote;                    // as stored
    std::shared_ptr<End> end;                  // of a connected stream
    std::deque<std::shared_ptr<End>> clients;  // pending
    std::deque<int> clientPorts;
    std::deque<std::string> datagrams;
    int peerPort = 0;
};

class Program : public LoopbackModel {
public:
    using LoopbackModel::LoopbackModel;

    void Run() {
        using Do = Operation<Program, Slot>;
        static constexpr std::array Operations = {
            Do{&Program::Create, false}, Do{&Program::Bind},           Do{&Program::Listen},
            Do{&Program::Connect},       Do{&Program::Accept},         Do{&Program::Send},
            Do{&Program::Receive},       Do{&Program::Close},          Do{&Program::Drop},
            Do{&Program::Inspect},       Do{&Program::SetNonBlocking}, Do{&Program::BindTaken}};
        Play(*this, input_, slots_, Operations, &Program::Drop);
    }

private:
    static Octets Loopback() { return {127, 0, 0, 1}; }
    static Endpoint At(int port) { return {.host = "127.0.0.1", .port = port}; }
    static int LocalPortOf(const Slot& slot) { return slot.socket->GetLocalAddress().GetPort(); }

    void Create(Slot& slot) {
        Drop(slot);
        slot = {};
        slot.isDatagram = input_.Below(3) == 0;
        slot.socket = slot.isDatagram
                          ? VelNet::CreateSocket(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP)
                          : VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
        slot.socket->SetReceiveTimeout(LongestWait * 1000);
        slot.state = State::Created;
    }

    void TryToBind(Slot& slot, int port, int error) {
        const Thrown expected =
            Failing("VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 127.0.0.1: " +
                        std::to_string(port),
                    error);
        ExpectOutcome("Bind", expected,
                      [&] { slot.socket->Bind(Loopback(), static_cast<unsigned short>(port)); });
    }

    void Bind(Slot& slot) {
        int error = slot.port != 0 ? 10022 : 0;
        if (slot.state == State::Closed) error = 10038;
        TryToBind(slot, 0, error);
        if (error != 0) return;
        slot.state = State::Bound;
        slot.port = LocalPortOf(slot);
    }

    // To the port of another socket.
    void BindTaken(Slot& slot) {
        const Slot& other = slots_[input_.Below(4)];
        const bool taken = other.state == State::Bound || other.state == State::Listening;
        if (!taken || slot.state != State::Created || slot.port != 0) return;
        if (slot.isDatagram == other.isDatagram) TryToBind(slot, other.port, 10048);
    }

    void Listen(Slot& slot) {
        int error = slot.port == 0 ? 10022 : 0;
        if (slot.state == State::Connected) error = 10056;
        if (slot.isDatagram) error = 10045;
        if (slot.state == State::Closed) error = 10038;
        const Thrown expected =
            Failing("VelNet::SocketImpl::Listen() - FAIL. Cannot listen to a socket", error);
        ExpectOutcome("Listen", expected,
                      [&] { Expect("Listen's result", 0, slot.socket->Listen()); });
        if (error == 0) slot.state = State::Listening;
    }

    void Connect(Slot& slot) {
        Slot& target = slots_[input_.Below(4)];
        if (&target == &slot || target.port == 0) return;
        if (slot.isDatagram) return ConnectDatagrams(slot, target);
        int error = slot.state == State::Connected ? 10056 : 0;
        if (slot.state == State::Listening) error = 10022;
        if (slot.state == State::Closed) error = 10038;
        if (slot.end && slot.end->HasLostPeer()) return;
        if (error == 0 && (slot.isNonBlocking || target.isDatagram || !HasRoom(target))) return;
        TryToConnect(slot, target, error);
        if (error == 0) JoinClient(slot, target);
    }

    void TryToConnect(Slot& slot, const Slot& target, int error) {
        const Thrown expected =
            Failing("VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:" +
                        std::to_string(target.port),
                    error);
        ExpectOutcome("Connect", expected, [&] {
            slot.socket->Connect(Loopback(), static_cast<unsigned short>(target.port));
        });
        if (error != 0) return;
        slot.state = State::Connected;
        if (slot.port != 0) Expect("the port stays", slot.port, LocalPortOf(slot));
        slot.port = LocalPortOf(slot);
        slot.local = At(slot.port);
        slot.remote = At(target.port);
        Record(ConnectionLine("Connected", slot.local, slot.remote));
    }

    static void JoinClient(Slot& slot, Slot& target) {
        const auto [end, other] = NewStream();
        slot.end = end;
        target.clients.push_back(other);
        target.clientPorts.push_back(slot.port);
    }

    void ConnectDatagrams(Slot& slot, const Slot& target) {
        if (!target.isDatagram || slot.state == State::Closed) return;
        // What has come from elsewhere is kept or not, as the system likes.
        if (!slot.datagrams.empty()) return;
        TryToConnect(slot, target, 0);
        slot.peerPort = target.port;
    }

    void Accept(Slot& slot) {
        Slot& target = slots_[input_.Below(4)];
        if (&target == &slot) return;
        if (slot.state == State::Listening && !slot.clients.empty())
            return AcceptClient(slot, target);
        if (slot.state == State::Listening && !slot.isNonBlocking) return;
        int error = slot.state == State::Listening ? 0 : 10022;
        if (slot.isDatagram) error = 10045;
        if (slot.state == State::Closed) error = 10038;
        const Thrown expected =
            Failing("VelNet::SocketAPI::Accept() - FAIL. Cannot accept a connection", error);
        VelNet::SocketAddress remote(Octets(9, 9, 9, 9), 9);
        ExpectOutcome("Accept", expected, [&] {
            const auto accepted = slot.socket->Accept(remote);
            Expect("whether there is a socket", false, static_cast<bool>(accepted));
        });
        Expect("the peer's port", 9, static_cast<int>(remote.GetPort()));
    }

    void AcceptClient(Slot& listener, Slot& target) {
        Drop(target);
        WaitUntilReadable(*listener.socket);
        VelNet::SocketAddress remote;
        target = {};
        target.socket = listener.socket->Accept(remote);
        target.state = State::Connected;
        target.isNonBlocking = listener.isNonBlocking;
        target.port = listener.port;
        target.local = At(listener.port);
        target.remote = At(listener.clientPorts.front());
        target.end = listener.clients.front();
        listener.clients.pop_front();
        listener.clientPorts.pop_front();
        Expect("the peer's port", target.remote.port, static_cast<int>(remote.GetPort()));
        Record(ConnectionLine("Connected", target.local, target.remote));
        target.socket->SetReceiveTimeout(LongestWait * 1000);
    }

    // Where a datagram of the slot's goes, if there is somebody who takes it.
    Slot* TakerOf(const Slot& slot) {
        for (Slot& other : slots_) {
            const bool listens = other.socket && other.isDatagram && other.state != State::Closed &&
                                 other.port == slot.peerPort;
            if (listens && (other.peerPort == 0 || other.peerPort == slot.port)) return &other;
        }
        return nullptr;
    }

    void Send(Slot& slot) {
        const std::string bytes(input_.Line());
        int error = slot.state == State::Connected ? 0 : 10057;
        if (slot.state == State::Closed) error = 10038;
        std::string* target = nullptr;
        if (error == 0 && !slot.isDatagram) {
            if (slot.end->isPeerClosed) return;
            if (slot.end->isReset) WaitUntilReadable(*slot.socket);
            if (slot.end->isReset)
                error = 10054;
            else
                target = &slot.end->peer.lock()->waiting;
        }
        Slot* const taker = error == 0 && slot.isDatagram ? TakerOf(slot) : nullptr;
        if (error == 0 && slot.isDatagram && taker == nullptr) return;
        TryToSend(slot, bytes, error);
        if (target != nullptr) *target += bytes;
        if (taker != nullptr) taker->datagrams.push_back(bytes);
    }

    void TryToSend(Slot& slot, const std::string& bytes, int error) {
        const auto size = static_cast<int>(bytes.size());
        const Thrown expected =
            Failing("VelNet::SocketImpl::Send() - FAIL. The ::send failed", error);
        if (error == 0) Record(TransferLines("Sent", bytes, slot.local, slot.remote));
        ExpectOutcome("Send", expected, [&] {
            Expect("the bytes sent", size, slot.socket->Send(bytes.data(), size));
        });
    }

    void Receive(Slot& slot) {
        const int room = static_cast<int>(1 + input_.Byte());
        if (slot.isDatagram && !slot.datagrams.empty()) return ReceiveDatagram(slot, room);
        if (slot.end && !slot.end->waiting.empty()) return ReceiveBytes(slot, room);
        if (slot.end && slot.end->isPeerClosed && !slot.end->isReset) return ReceiveEnd(slot);
        int error = slot.end ? 10035 : 10057;
        if (slot.isDatagram) error = slot.port != 0 ? 10035 : 10022;
        if (slot.end && slot.end->isReset) error = 10054;
        if (slot.state == State::Closed) error = 10038;
        if (error == 10035 && !slot.isNonBlocking) return;
        if (error == 10054) WaitUntilReadable(*slot.socket);
        FailToReceive(slot, room,
                      Failing("VelNet::SocketImpl::Receive() - FAIL. The ::recv failed", error));
    }

    static void FailToReceive(Slot& slot, int room, const Thrown& expected) {
        std::string buffer(static_cast<std::size_t>(room), '?');
        ExpectOutcome("Receive", expected,
                      [&] { static_cast<void>(slot.socket->Receive(buffer.data(), room)); });
    }

    void ReceiveEnd(Slot& slot) {
        WaitUntilReadable(*slot.socket);
        Record(ErrorLine(EndOfStream()));
        FailToReceive(slot, 10, EndOfStream());
    }

    static std::string Received(Slot& slot, int room) {
        std::string buffer(static_cast<std::size_t>(room), '?');
        const int count = slot.socket->Receive(buffer.data(), room);
        return buffer.substr(0, static_cast<std::size_t>(count));
    }

    // How much of it comes at once is the system's affair.
    void ReceiveBytes(Slot& slot, int room) {
        WaitUntilReadable(*slot.socket);
        const std::string bytes = Received(slot, room);
        Expect("the bytes received", slot.end->waiting.substr(0, bytes.size()), bytes);
        slot.end->waiting.erase(0, bytes.size());
        Record(TransferLines("Received", bytes, slot.local, slot.remote));
    }

    void ReceiveDatagram(Slot& slot, int room) {
        WaitUntilReadable(*slot.socket);
        const std::string bytes = slot.datagrams.front();
        slot.datagrams.pop_front();
        const bool tooLong = bytes.size() > static_cast<std::size_t>(room);
        if (bytes.empty()) Record(ErrorLine(EndOfStream()));
        if (bytes.empty()) return FailToReceive(slot, room, EndOfStream());
        if (tooLong)
            return FailToReceive(
                slot, room,
                Failing("VelNet::SocketImpl::Receive() - FAIL. The ::recv failed", 10040));
        Expect("the datagram received", bytes, Received(slot, room));
        Record(TransferLines("Received", bytes, slot.local, slot.remote));
    }

    void Inspect(Slot& slot) {
        Expect("IsValid", slot.state != State::Closed, slot.socket->IsValid());
        const bool waiting = slot.end ? !slot.end->waiting.empty() : !slot.datagrams.empty();
        if (waiting) WaitUntilReadable(*slot.socket);
        // An empty datagram is no byte.
        const bool empty = !slot.datagrams.empty() && slot.datagrams.front().empty();
        int status = slot.state == State::Listening ? 1 : 0;
        if (slot.state == State::Connected) status = waiting && !empty ? 2 : 3;
        if (!(empty && slot.datagrams.size() > 1))
            Expect("GetStatus", status, slot.socket->GetStatus());
        InspectAddresses(slot);
        for (const Slot& other : slots_)
            if (other.socket)
                Expect("IsSameSocket",
                       &slot == &other ||
                           (slot.state == State::Closed && other.state == State::Closed),
                       slot.socket->IsSameSocket(*other.socket.Get()));
    }

    void InspectAddresses(Slot& slot) {
        int error = slot.port == 0 ? 10022 : 0;
        if (slot.state == State::Closed) error = 10038;
        ExpectOutcome("GetLocalAddress",
                      Failing("VelNet::SocketImpl::Send() - FAIL. The ::getsockname failed", error),
                      [&] { Expect("the local port", slot.port, LocalPortOf(slot)); });
        if (slot.end && slot.end->HasLostPeer()) return;
        if (slot.state == State::Connected)
            error = 0;
        else if (slot.state != State::Closed)
            error = 10057;
        ExpectOutcome("GetRemoteAddress",
                      Failing("VelNet::SocketImpl::Send() - FAIL. The ::getpeername failed", error),
                      [&] {
                          Expect("the remote port", slot.remote.port,
                                 static_cast<int>(slot.socket->GetRemoteAddress().GetPort()));
                      });
    }

    void SetNonBlocking(Slot& slot) {
        const bool open = slot.state != State::Closed;
        Expect("SetNonBlocking", open, slot.socket->SetNonBlocking());
        slot.isNonBlocking = open;
    }

    // What the model knows of a socket that goes away.
    void ExpectClosed(Slot& slot) {
        if (slot.state == State::Closed)
            Failing("VelNet::SocketImpl::Close() - FAIL. Cannot close a socket", 10038);
        Record(ConnectionLine("Disconnected", slot.local, slot.remote));
        PartFromAll(slot);
        Slot closed;
        closed.socket = std::move(slot.socket);
        closed.isDatagram = slot.isDatagram;
        slot = std::move(closed);
    }

    void Close(Slot& slot) {
        ExpectClosed(slot);
        slot.socket->Close();
    }

    void Drop(Slot& slot) {
        if (slot.socket && slot.state != State::Closed) ExpectClosed(slot);
        slot.socket = {};
    }

    std::array<Slot, 4> slots_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    const VelNet::SocketInitialization layer;
    Program(Input(data, size)).Run();
    return 0;
}
