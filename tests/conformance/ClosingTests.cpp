// What closing a socket does to the calls of other threads on it.
#include <gtest/gtest.h>
#include <support/WaitingCall.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Provocation.h"
#include "Scene.h"
#include "WineAnswers.h"

namespace Conformance {
namespace {

constexpr int Interrupted = 10004;

// Tells the error of a call, 0 for one that succeeds.
class WaitingCall {
public:
    explicit WaitingCall(const std::function<int()>& call)
        : call_([call] { return call() < 0 ? Winsock::WSAGetLastError() : 0; }) {}
    int Error() { return call_.Finish(); }

private:
    Support::WaitingCall<int> call_;
};

// What waits, as the list of Wine's answers names it.
constexpr char WaitingAccept[] = "an accept whose socket is closed";
constexpr char WaitingReceive[] = "a receive whose socket is closed";
constexpr char WaitingConnect[] = "a connect whose socket is closed";
constexpr char WaitingSelect[] = "a select whose socket is closed";
constexpr char ExceptionalSelect[] = "a select for exceptions whose socket is closed";

testing::AssertionResult IsInterrupted(int error, std::string_view wineSituation) {
    if (IsWinesAnswer(wineSituation, error == 0 ? 0 : -1, error))
        return testing::AssertionSuccess() << "as Wine does";
    return Answers(Interrupted, error);
}

class Closing : public Started {
protected:
    // Closes the socket under the call that waits on it.
    static int ErrorWhenClosed(OwnedSocket& socket, const std::function<int()>& call) {
        WaitingCall waiting(call);
        EXPECT_TRUE(Succeeds(Winsock::closesocket(socket.Take())));
        return waiting.Error();
    }

    static testing::AssertionResult Interrupts(OwnedSocket& socket, std::string_view wineSituation,
                                               const std::function<int()>& call) {
        return IsInterrupted(ErrorWhenClosed(socket, call), wineSituation);
    }
};

int AcceptOn(Winsock::Handle listener) {
    return Winsock::accept(listener, nullptr, nullptr) == Winsock::InvalidSocket ? -1 : 0;
}

int ReceiveOn(Winsock::Handle handle) {
    char byte = 0;
    return Winsock::recv(handle, &byte, 1, 0);
}

int ReceiveFromOn(Winsock::Handle handle) {
    char byte = 0;
    return Winsock::recvfrom(handle, &byte, 1, 0, nullptr, nullptr);
}

int SelectReadable(Winsock::Handle handle) {
    Winsock::HandleSet set = {.count = 1, .handles = {handle}};
    return Winsock::select(0, &set, nullptr, nullptr, nullptr);
}

int SelectExceptional(Winsock::Handle handle) {
    Winsock::HandleSet set = {.count = 1, .handles = {handle}};
    return Winsock::select(0, nullptr, nullptr, &set, nullptr);
}

TEST_F(Closing, EndsAnAcceptThatWaits) {
    OwnedSocket listener = NewListener();
    const Winsock::Handle handle = listener.Get();
    EXPECT_TRUE(Interrupts(listener, WaitingAccept, [=] { return AcceptOn(handle); }));
}

TEST_F(Closing, EndsAnAcceptWhoseListenerHasAReceiveTimeout) {
    OwnedSocket listener = NewListener();
    SetOption(listener, Winsock::OptionReceiveTimeout, 1);
    const Winsock::Handle handle = listener.Get();
    EXPECT_TRUE(Interrupts(listener, WaitingAccept, [=] { return AcceptOn(handle); }));
}

TEST_F(Closing, FreesTheListenersPortAtOnce) {
    if (WineGivesNoAnswer("the port of a closed listener")) {
        GTEST_SKIP() << "Wine gives no answer";
    }
    OwnedSocket listener = NewListener();
    const unsigned int port = LocalPort(listener);
    const Winsock::Handle handle = listener.Get();
    WaitingCall waiting([=] { return AcceptOn(handle); });
    ASSERT_TRUE(Succeeds(Winsock::closesocket(listener.Take())));
    const OwnedSocket next = NewStream();
    EXPECT_TRUE(Succeeds(Bind(next, Loopback(port))));
    EXPECT_TRUE(Succeeds(Winsock::listen(next.Get(), 1)));
}

TEST_F(Closing, EndsAReceiveThatWaits) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(Interrupts(pair.client, WaitingReceive, [=] { return ReceiveOn(handle); }));
    EXPECT_EQ(Receive(pair.server), "");
}

TEST_F(Closing, EndsAReceiveThatWaitsWithATimeout) {
    Pair pair = NewConnectedPair();
    SetOption(pair.client, Winsock::OptionReceiveTimeout, 60'000);
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(Interrupts(pair.client, WaitingReceive, [=] { return ReceiveOn(handle); }));
}

TEST_F(Closing, EndsEveryReceiveThatWaits) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    WaitingCall first([=] { return ReceiveOn(handle); });
    WaitingCall second([=] { return ReceiveOn(handle); });
    WaitingCall third([=] { return SelectReadable(handle); });
    ASSERT_TRUE(Succeeds(Winsock::closesocket(pair.client.Take())));
    EXPECT_TRUE(IsInterrupted(first.Error(), WaitingReceive));
    EXPECT_TRUE(IsInterrupted(second.Error(), WaitingReceive));
    EXPECT_TRUE(IsInterrupted(third.Error(), WaitingSelect));
}

TEST_F(Closing, EndsAReceiveOfDatagramsThatWaits) {
    OwnedSocket socket = NewBoundDatagram();
    const Winsock::Handle handle = socket.Get();
    EXPECT_TRUE(Interrupts(socket, WaitingReceive, [=] { return ReceiveFromOn(handle); }));
}

TEST_F(Closing, EndsAReceiveOfDatagramsThatWaitsWithATimeout) {
    OwnedSocket socket = NewBoundDatagram();
    SetOption(socket, Winsock::OptionReceiveTimeout, 60'000);
    const Winsock::Handle handle = socket.Get();
    EXPECT_TRUE(Interrupts(socket, WaitingReceive, [=] { return ReceiveFromOn(handle); }));
}

TEST_F(Closing, EndsAReceiveOfAConnectedDatagramSocketThatWaits) {
    const OwnedSocket peer = NewBoundDatagram();
    OwnedSocket socket = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(socket, LocalAddress(peer))));
    const Winsock::Handle handle = socket.Get();
    EXPECT_TRUE(Interrupts(socket, WaitingReceive, [=] { return ReceiveOn(handle); }));
}

TEST_F(Closing, EndsASendThatWaits) {
    if (WineGivesNoAnswer("a send whose socket is closed")) {
        GTEST_SKIP() << "Wine gives no answer";
    }
    Pair pair = NewConnectedPair();
    const std::string much(32U << 20U, 'x');
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(Answers(Interrupted, ErrorWhenClosed(pair.client, [&] {
                            return Winsock::send(handle, much.data(), static_cast<int>(much.size()),
                                                 0);
                        })));
}

TEST_F(Closing, EndsASendThatWaitsWithATimeout) {
    if (WineGivesNoAnswer("a send whose socket is closed")) {
        GTEST_SKIP() << "Wine gives no answer";
    }
    Pair pair = NewConnectedPair();
    SetOption(pair.client, Winsock::OptionSendTimeout, 60'000);
    const std::string much(32U << 20U, 'x');
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(Answers(Interrupted, ErrorWhenClosed(pair.client, [&] {
                            return Winsock::send(handle, much.data(), static_cast<int>(much.size()),
                                                 0);
                        })));
}

TEST_F(Closing, EndsAConnectThatWaits) {
    FullListener full;
    OwnedSocket socket = NewStream();
    const Winsock::Handle handle = socket.Get();
    const Winsock::AddressIpv4 address = Loopback(full.Port());
    EXPECT_TRUE(Interrupts(socket, WaitingConnect,
                           [=] { return Winsock::connect(handle, &address, sizeof address); }));
}

TEST_F(Closing, EndsASelectOverAConnection) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(Interrupts(pair.client, WaitingSelect, [=] { return SelectReadable(handle); }));
}

TEST_F(Closing, EndsASelectForExceptionsOfAConnection) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    EXPECT_TRUE(
        Interrupts(pair.client, ExceptionalSelect, [=] { return SelectExceptional(handle); }));
}

TEST_F(Closing, EndsASelectOverAListener) {
    OwnedSocket listener = NewListener();
    const Winsock::Handle handle = listener.Get();
    EXPECT_TRUE(Interrupts(listener, WaitingSelect, [=] { return SelectReadable(handle); }));
}

TEST_F(Closing, EndsASelectOverADatagramSocket) {
    OwnedSocket socket = NewBoundDatagram();
    const Winsock::Handle handle = socket.Get();
    EXPECT_TRUE(Interrupts(socket, WaitingSelect, [=] { return SelectReadable(handle); }));
}

// The system has nothing to tell of such a stream, ever.
TEST_F(Closing, EndsASelectOverAStreamWithoutConnection) {
    OwnedSocket socket = NewStream();
    const Winsock::Handle handle = socket.Get();
    EXPECT_TRUE(Interrupts(socket, WaitingSelect, [=] { return SelectReadable(handle); }));
}

TEST_F(Closing, EndsASelectOverManySockets) {
    std::vector<OwnedSocket> sockets;
    Winsock::HandleSet set = {};
    while (set.count < 60) {
        sockets.push_back(NewBoundDatagram());
        set.handles[set.count++] = sockets.back().Get();
    }
    WaitingCall waiting(
        [=]() mutable { return Winsock::select(0, &set, nullptr, nullptr, nullptr); });
    ASSERT_TRUE(Succeeds(Winsock::closesocket(sockets[31].Take())));
    EXPECT_TRUE(IsInterrupted(waiting.Error(), WaitingSelect));
}

TEST_F(Closing, DeliversWhatWasSentBefore) {
    Pair pair = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    WaitingCall waiting([=] { return ReceiveOn(handle); });
    const std::string much(100'000, 'x');
    ASSERT_TRUE(Succeeds(Send(pair.client, much), 100'000));
    ASSERT_TRUE(Succeeds(Winsock::closesocket(pair.client.Take())));
    std::string received;
    for (std::string part = "x"; !part.empty(); received += part) {
        if (received.size() > much.size()) break;
        part = Receive(pair.server, 65'536);
    }
    EXPECT_EQ(received.size(), much.size());
}

TEST_F(Closing, LeavesOtherSocketsCallsAlone) {
    Pair pair = NewConnectedPair();
    Pair other = NewConnectedPair();
    const Winsock::Handle handle = pair.client.Get();
    WaitingCall waiting([=] { return ReceiveOn(handle); });
    other.client.Close();
    ASSERT_TRUE(Succeeds(Send(pair.server, "x"), 1));
    EXPECT_EQ(waiting.Error(), 0);
}

TEST_F(Closing, IsForOneOfManyThreadsOnly) {
    for (int round = 0; round < 200; ++round) {
        const Winsock::Handle handle = NewBoundDatagram().Take();
        std::atomic<int> closed = 0;
        std::vector<std::thread> threads(4);
        for (std::thread& thread : threads) {
            thread = std::thread([&] {
                if (Winsock::closesocket(handle) == 0) ++closed;
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        ASSERT_EQ(closed, 1);
    }
}

TEST_F(Closing, OfAllSocketsByTheLastCleanUpEndsWhatWaits) {
    if (WineGivesNoAnswer("a clean-up while a call waits")) GTEST_SKIP() << "Wine gives no answer";
    OwnedSocket listener = NewListener();
    const Winsock::Handle handle = listener.Get();
    WaitingCall waiting([=] { return AcceptOn(handle); });
    ASSERT_TRUE(Succeeds(Winsock::WSACleanup()));
    const int error = waiting.Error();
    Winsock::StartupData data = {};
    ASSERT_EQ(Winsock::WSAStartup(0x0202, &data), 0);
    EXPECT_TRUE(Answers(Interrupted, error));
    listener.Take();
}

}  // namespace
}  // namespace Conformance
