#include <VelCompanion/Owners.h>
#include <VelCompanion/Pairs.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>

#include <functional>
#include <future>
#include <initializer_list>
#include <random>

#include "storms/posix/Storms.h"
#include "support/posix/ClosedAfter.h"

namespace Storms {

namespace {

using Clock = std::chrono::steady_clock;
using SocketPtr = VelBase::ReturnPtrI<VelNet::Socket>;

constexpr unsigned int LongestCase = 300;  // seconds
constexpr std::size_t LargestBlock = 20'000;
constexpr std::size_t DatagramSize = 1'000;

VelNet::Octets Loopback() {
    return {127, 0, 0, 1};
}

// The same bytes for both sides, in blocks of all sizes.
class Source {
public:
    std::string Next(std::size_t most) {
        std::string block(1 + random_() % most, '\0');
        for (char& byte : block)
            byte = static_cast<char>(random_());
        return block;
    }

private:
    std::minstd_rand random_;
};

// Runs the function in a thread of its own, under signals of its own.
template <class Function>
auto InStorm(const Signals& signals, Function function) {
    return std::async(std::launch::async, [signals, function] {
        const Support::SignalStorm storm(signals);
        return function();
    });
}

using Case = std::function<std::string(const Signals&, std::size_t)>;

// Empty text: all is well.
std::string OutcomeOf(const std::function<std::string()>& work) try {
    const Bounded bounded(LongestCase);
    return work();
} catch (...) {
    return TextOfException();
}

Totals TotalsOf(const char* what, const std::function<std::string()>& work) {
    const unsigned long long before = Support::SignalStorm::Delivered();
    const std::string wrong = OutcomeOf(work);
    Totals totals = {.cases = 1, .threads = 2};
    totals.signals = Support::SignalStorm::Delivered() - before;
    if (!wrong.empty()) totals.failures.push_back(std::string(what) + ": " + wrong);
    return totals;
}

// --- Transfers

void SendFrom(VelNet::Socket& socket, std::size_t bytes) {
    Source source;
    for (std::size_t done = 0; done < bytes;) {
        const std::string block = source.Next(LargestBlock);
        VelCompanion::SendAll(socket, block);
        done += block.size();
    }
    socket.Close();
}

std::string ReceiveInto(VelNet::Socket& socket, std::size_t bytes) {
    Source source;
    for (std::size_t done = 0; done < bytes;) {
        const std::string expected = source.Next(LargestBlock);
        if (VelCompanion::ReceiveExactly(socket, expected.size()) != expected)
            return "other bytes arrive after " + std::to_string(done);
        done += expected.size();
    }
    char byte = 0;
    return VelCompanion::ReceiveSome(socket, &byte, 1) == 0 ? "" : "bytes arrive behind the last";
}

std::string StreamOver(const VelCompanion::SocketPair& pair, const Signals& signals,
                       std::size_t bytes) {
    auto sender = InStorm(signals, [&] { SendFrom(*pair.first, bytes); });
    auto receiver = InStorm(signals, [&] { return ReceiveInto(*pair.second, bytes); });
    const std::string wrong = receiver.get();
    sender.get();
    return wrong;
}

std::string Stream(const Signals& signals, std::size_t bytes) {
    return StreamOver(VelCompanion::MakeSocketPair(), signals, bytes);
}

// Timeouts that never elapse, which let each call take another way.
std::string StreamWithTimeouts(const Signals& signals, std::size_t bytes) {
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    for (VelNet::Socket* const socket : {pair.first.Get(), pair.second.Get()}) {
        socket->SetSendTimeout(1'000 * LongestCase);
        socket->SetReceiveTimeout(1'000 * LongestCase);
    }
    return StreamOver(pair, signals, bytes);
}

SocketPtr BoundDatagram() {
    SocketPtr socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->Bind(Loopback(), 0);
    socket->SetReceiveTimeout(1'000 * LongestCase);
    return socket;
}

// One sends a datagram and awaits the same one.
std::string Throw(VelNet::Socket& socket, std::size_t bytes) {
    Source source;
    char room[2 * DatagramSize];
    for (std::size_t done = 0; done < bytes; done += DatagramSize) {
        const std::string datagram = source.Next(DatagramSize);
        (void)socket.Send(datagram.data(), static_cast<int>(datagram.size()));
        const int come = socket.Receive(room, sizeof room);
        if (std::string(room, static_cast<std::size_t>(come)) != datagram)
            return "another datagram arrives";
    }
    return {};
}

void Return(VelNet::Socket& socket, std::size_t bytes) {
    char room[2 * DatagramSize];
    for (std::size_t done = 0; done < bytes; done += DatagramSize)
        (void)socket.Send(room, socket.Receive(room, sizeof room));
}

std::string Datagrams(const Signals& signals, std::size_t bytes) {
    const SocketPtr one = BoundDatagram();
    const SocketPtr other = BoundDatagram();
    one->Connect(Loopback(), other->GetLocalAddress().GetPort());
    other->Connect(Loopback(), one->GetLocalAddress().GetPort());
    auto returner = InStorm(signals, [&] { Return(*other, bytes); });
    auto thrower = InStorm(signals, [&] { return Throw(*one, bytes); });
    const std::string wrong = thrower.get();
    returner.get();
    return wrong;
}

SocketPtr StreamSocket() {
    return VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
}

void ConnectAndGreet(unsigned short port, std::size_t times) {
    for (std::size_t time = 0; time < times; ++time) {
        const SocketPtr client = StreamSocket();
        client->Connect(Loopback(), port);
        VelCompanion::SendAll(*client, "hello");
    }
}

std::string AcceptGreetings(VelNet::Socket& listener, std::size_t times) {
    for (std::size_t time = 0; time < times; ++time) {
        VelNet::SocketAddress peer;
        const SocketPtr server = listener.Accept(peer);
        if (!server) return "a blocking listener accepts nothing";
        if (VelCompanion::ReceiveExactly(*server, 5) != "hello") return "another greeting arrives";
    }
    return {};
}

std::string Connections(const Signals& signals, std::size_t bytes) {
    const std::size_t times = bytes / 100'000;
    const SocketPtr listener = StreamSocket();
    listener->Bind(Loopback(), 0);
    listener->Listen();
    const unsigned short port = listener->GetLocalAddress().GetPort();
    auto clients = InStorm(signals, [=] { ConnectAndGreet(port, times); });
    auto server = InStorm(signals, [&] { return AcceptGreetings(*listener, times); });
    const std::string wrong = server.get();
    clients.get();
    return wrong;
}

// --- Waits

// What the wait is for does not come. It ends with that code.
struct Wait {
    const char* what;
    std::chrono::milliseconds time;
    std::function<int(VelNet::Socket&)> wait;
};

template <class Operation>
int CodeOf(const Operation& operation) {
    try {
        operation();
    } catch (const VelNet::Exception& failure) {
        return failure.GetErrorCode();
    }
    return 0;
}

constexpr std::chrono::milliseconds Timeout(250);

int ReceiveInVain(VelNet::Socket& socket) {
    socket.SetReceiveTimeout(static_cast<unsigned int>(Timeout.count()));
    char byte = 0;
    return CodeOf([&] { (void)socket.Receive(&byte, 1); });
}

// The last send, which finds no room at all, waits for the whole time; so do others in part.
int SendInVain(VelNet::Socket& socket) {
    socket.SetSendTimeout(static_cast<unsigned int>(Timeout.count()));
    const std::string block(std::size_t{1} << 22U, 'x');
    return CodeOf([&] {
        for (;;)
            (void)socket.Send(block.data(), static_cast<int>(block.size()));
    });
}

int SelectInVain(VelNet::Socket& socket) {
    const VelCompanion::CollectionOwner collection = VelCompanion::MakeCollection();
    collection->Add(&socket, VelNet::EVENT_READ);
    bool isReady = false;
    const int code = CodeOf(
        [&] { isReady = static_cast<bool>(VelCompanion::CollectionOwner(collection->Select(1))); });
    return code == 0 && !isReady ? static_cast<int>(VelNet::SOCKET_ERR_TIMEDOUT) : code;
}

// The clock that is asked here may be read before the library's.
std::string TimeIsWrong(const Wait& wait, Clock::duration passed, std::chrono::seconds patience) {
    const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(passed);
    if (milliseconds < wait.time - std::chrono::milliseconds(5)) return "it ends too early";
    return milliseconds < patience ? "" : "it ends too late";
}

std::string WaitInVain(const Wait& wait, const Signals& signals, std::chrono::seconds patience) {
    const VelCompanion::SocketPair pair = VelCompanion::MakeSocketPair();
    auto waiter = InStorm(signals, [&] {
        const Support::ClosedAfter bounded(*pair.first, patience);
        const Clock::time_point begin = Clock::now();
        const int code = wait.wait(*pair.first);
        if (code != VelNet::SOCKET_ERR_TIMEDOUT)
            return "it ends with the code " + std::to_string(code);
        return TimeIsWrong(wait, Clock::now() - begin, patience);
    });
    return waiter.get();
}

}  // namespace

Totals TransfersUnderSignals(const Signals& signals, std::size_t bytes) {
    const VelNet::SocketInitialization layer;
    Totals totals;
    const auto play = [&](const char* what, const Case& one, std::size_t share) {
        totals.Add(TotalsOf(what, [&] { return one(signals, share); }));
        totals.bytes += share;
    };
    play("a stream", Stream, bytes);
    play("a stream with timeouts", StreamWithTimeouts, bytes);
    play("datagrams", Datagrams, bytes / 10);
    play("connections", Connections, bytes / 10);
    return totals;
}

Totals WaitsUnderSignals(const Signals& signals, std::chrono::seconds patience) {
    const VelNet::SocketInitialization layer;
    Totals totals;
    for (const Wait& wait : {Wait{"a wait to receive", Timeout, ReceiveInVain},
                             Wait{"a wait to send", Timeout, SendInVain},
                             Wait{"a wait for a set", std::chrono::seconds(1), SelectInVain}})
        totals.Add(TotalsOf(wait.what, [&] { return WaitInVain(wait, signals, patience); }));
    return totals;
}

}  // namespace Storms
