// Waits for many sockets, as far as they depend on signals, descriptors and what the system keeps.
#include <net/if.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <vector>

#include "conformance/DatagramScene.h"
#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/WaitingCall.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using Winsock::HandleSet;

int Number(const OwnedSocket& socket) {
    return static_cast<int>(socket.Get());
}

using SelectStorm = Started;

// A wait that started again with each signal would never end, one that a signal ends would be
// early.
TEST_F(SelectStorm, AThousandSelectsReturnNeitherEarlyNorLate) {
    constexpr int Selects = 1000;
    constexpr Milliseconds Time{4};
    const OwnedSocket socket = NewBoundDatagram();
    const Winsock::TimeValue time = {0, 4000};
    const SignalStorm storm({}, 1);
    Milliseconds longest{0};
    const Milliseconds all = TimeOf([&] {
        for (int count = 0; count < Selects; ++count) {
            HandleSet read = SetOf({socket.Get()});
            const Milliseconds waited =
                TimeOf([&] { ASSERT_EQ(Winsock::select(0, &read, nullptr, nullptr, &time), 0); });
            ASSERT_GE(waited, Time) << count;
            longest = std::max(longest, waited);
        }
    });
    EXPECT_GE(SignalStorm::SignalCount(), Selects);
    EXPECT_LE(longest, Milliseconds(2000));
    EXPECT_LE(all, Selects * Time + Milliseconds(20'000));
}

using SelectDescriptors = Started;

TEST_F(SelectDescriptors, AboveTheOldLimitOfSetsAreAsGoodAsAll) {
    const DescriptorLimit limit(4096);
    if (!limit.IsSet()) GTEST_SKIP() << "the system allows no more than 1024 descriptors";
    std::vector<OwnedSocket> sockets;
    while (sockets.empty() || sockets.back().Get() < 1100)
        sockets.push_back(NewBoundDatagram());
    const OwnedSocket& last = sockets.back();
    const OwnedSocket& quiet = sockets[sockets.size() - 2];
    ASSERT_EQ(SendTo(sockets.front(), "far up", LocalAddress(last)), 6);
    HandleSet read = SetOf({quiet.Get(), last.Get(), sockets.front().Get()});
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &Minute), 1));
    EXPECT_EQ(HandlesIn(read), Handles({&last}));
    EXPECT_EQ(Receive(last), "far up");
}

TEST_F(SelectDescriptors, ThatAreClosedDuringTheWaitEndIt) {
    OwnedSocket socket = NewBoundDatagram();
    HandleSet read = SetOf({socket.Get()});
    // The tests look up a system call when it is made first, which a signal handler must not do.
    ::shutdown(-1, SHUT_RD);
    const SignalStorm storm([&] { socket.Close(); });
    EXPECT_TRUE(FailsWith(10004, Winsock::select(0, &read, nullptr, nullptr, &Minute)));
    EXPECT_EQ(read.count, 1U);
}

TEST_F(SelectDescriptors, ForWhichTheSystemCannotWaitFail) {
    const OwnedSocket socket = NewBoundDatagram();
    HandleSet read = SetOf({socket.Get()});
    const DescriptorLimit none(0);
    ASSERT_TRUE(none.IsSet());
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, &read, nullptr, nullptr, &Minute)));
    EXPECT_EQ(read.count, 1U);
}

TEST_F(SelectDescriptors, OfASetWithMoreThanItHasRoomForAreRefused) {
    HandleSet read = SetOf({NewDatagram().Get()});
    read.count = 65;
    EXPECT_TRUE(FailsWith(10022, Winsock::select(0, &read, nullptr, nullptr, &AtOnce)));
    EXPECT_EQ(read.count, 65U);
}

// The sockets with these numbers, counted from the lowest number for which all of them are there.
std::vector<Winsock::Handle> Numbered(const std::vector<OwnedSocket>& sockets,
                                      const std::vector<int>& numbers) {
    for (const OwnedSocket& lowest : sockets) {
        std::vector<Winsock::Handle> found;
        for (const int number : numbers) {
            for (const OwnedSocket& socket : sockets) {
                if (Number(socket) == Number(lowest) + number) found.push_back(socket.Get());
            }
        }
        if (found.size() == numbers.size()) return found;
    }
    return {};
}

// A socket that is given twice is found by its number's remainder, which others have too.
TEST_F(SelectDescriptors, WithNumbersOfOneRemainderAreAllLeftInTheSet) {
    std::vector<OwnedSocket> sockets;
    for (int count = 0; count < 400; ++count)
        sockets.push_back(NewDatagram());
    for (const std::vector<int>& numbers :
         {std::vector{0, 128, 256, 1}, std::vector{256, 128, 0, 1}, std::vector{127, 255, 0}}) {
        const std::vector<Winsock::Handle> handles = Numbered(sockets, numbers);
        ASSERT_EQ(handles.size(), numbers.size());
        HandleSet write = SetOf({});
        for (const Winsock::Handle handle : handles)
            write.handles[write.count++] = handle;
        EXPECT_EQ(Winsock::select(0, nullptr, &write, nullptr, &Minute), std::ssize(handles));
        EXPECT_EQ(HandlesIn(write), handles);
    }
}

TEST_F(SelectDescriptors, OfOneSetGivenTwiceAreLeftInItOnce) {
    std::vector<OwnedSocket> sockets;
    HandleSet set = {};
    while (set.count < HandleSet::Room) {
        sockets.push_back(NewDatagram());
        set.handles[set.count++] = sockets.back().Get();
    }
    EXPECT_TRUE(Succeeds(Winsock::select(0, &set, &set, nullptr, &AtOnce), 64));
    EXPECT_EQ(set.count, 64U);
}

using SelectOutcome = Started;

TEST_F(SelectOutcome, OfARefusedBlockingConnectIsNone) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket socket = NewStream();
    ASSERT_TRUE(FailsWith(10061, Connect(socket, LocalAddress(bound))));
    EXPECT_EQ(ReadyFor(socket, {0, 10'000}), "");
}

TEST_F(SelectOutcome, OfAResetConnectionNobodyHadAskedForIsNoFailedConnect) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(listener))));
    RawPeer server(::accept(Number(listener), nullptr, nullptr));
    server.Reset();
    AwaitEnd(socket.Get());
    EXPECT_EQ(ReadyFor(socket, Minute), "rw");
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_EQ(ReadyFor(socket), "rw");
}

TEST_F(SelectOutcome, ThatATransferHasMetIsStillInTheLastSet) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(bound))));
    AwaitEnd(socket.Get());
    ASSERT_TRUE(FailsWith(10057, TryReceive(socket)));
    EXPECT_EQ(ReadyFor(socket), "e");
}

TEST_F(SelectOutcome, OfAFailedConnectIsForgottenWithTheNextOne) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(bound))));
    EXPECT_EQ(ReadyFor(socket, Minute), "e");
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(ReadyFor(socket, Minute), "w");
}

// Two that connect to each other at the same moment.
TEST_F(SelectOutcome, OfAConnectThatThePeersHasMetIsNoneBeforeItIsAcknowledged) {
    using namespace SystemCalls;
    const FullListener listener;
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, Loopback(listener.Port()))));
    const HookedCall state(SystemCall::Getsockopt,
                           [](const Call& call) {
                               const Word result = call.Make();
                               call.Pointer<tcp_info>(3)->tcpi_state = TCP_SYN_RECV;
                               return result;
                           },
                           {.level = IPPROTO_TCP, .option = TCP_INFO});
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
    EXPECT_EQ(ReadyFor(socket), "");
    EXPECT_GE(state.Seen(), 1U);
}

// The system goes on telling of the end, but no longer why.
TEST_F(SelectOutcome, ThatWasTakenElsewhereIsStillInTheLastSet) {
    const OwnedSocket bound = NewBoundStream();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(bound))));
    AwaitEnd(socket.Get());
    int error = 0;
    socklen_t length = sizeof error;
    ASSERT_EQ(::getsockopt(Number(socket), SOL_SOCKET, SO_ERROR, &error, &length), 0);
    ASSERT_EQ(error, ECONNREFUSED);
    EXPECT_EQ(ReadyFor(socket), "e");
}

Milliseconds ProcessorTime() {
    timespec time = {};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return Milliseconds(time.tv_sec * 1000 + time.tv_nsec / 1'000'000);
}

// To the system such a stream is ready for everything.
TEST_F(SelectOutcome, OfNoConnectAtAllDoesNotKeepTheWaitBusy) {
    const OwnedSocket socket = NewStream();
    const Milliseconds before = ProcessorTime();
    EXPECT_EQ(ReadyFor(socket, {1, 0}), "");
    EXPECT_LT(ProcessorTime() - before, Milliseconds(200));
}

bool NarrowLoopback() {
    ifreq request = {};
    std::strcpy(request.ifr_name, "lo");
    request.ifr_mtu = 1500;
    const OwnedSocket any = NewDatagram();
    return ::ioctl(Number(any), SIOCSIFMTU, &request) == 0;
}

// The system keeps what it could not send as a report of its own.
void ExpectNothingToRead() {
    ASSERT_TRUE(NarrowLoopback());
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewBoundDatagram();
    const int whole = IP_PMTUDISC_DO;
    ASSERT_EQ(::setsockopt(Number(sender), IPPROTO_IP, IP_MTU_DISCOVER, &whole, sizeof whole), 0);
    EXPECT_TRUE(FailsWith(10040, SendTo(sender, std::string(2000, 'x'), LocalAddress(receiver))));
    ASSERT_LT(::sendto(Number(sender), "x", 1, 0, nullptr, 0), 0);
    EXPECT_EQ(ReadyFor(sender, {0, 20'000}), "w");
    HandleSet read = SetOf({sender.Get()});
    const Winsock::TimeValue time = {0, 50'000};
    EXPECT_GE(TimeOf([&] { EXPECT_EQ(Winsock::select(0, &read, nullptr, nullptr, &time), 0); }),
              Milliseconds(50));
    EXPECT_TRUE(Succeeds(SendTo(sender, "small", LocalAddress(receiver)), 5));
    EXPECT_EQ(Receive(receiver), "small");
    // What comes later is read all the same.
    EXPECT_TRUE(FailsWith(10040, SendTo(sender, std::string(2000, 'x'), LocalAddress(receiver))));
    ASSERT_LT(::sendto(Number(sender), "x", 1, 0, nullptr, 0), 0);
    Support::WaitingCall<bool> waiting([&] { return IsReadable(sender); });
    EXPECT_TRUE(Succeeds(SendTo(receiver, "at last", LocalAddress(sender)), 7));
    EXPECT_TRUE(waiting.Finish());
}

TEST_F(SelectOutcome, OfADatagramThatCouldNotBeSentIsNothingToRead) {
    const SceneResult result = RunWithNames("", "host", [] {
        ExpectNothingToRead();
        return !testing::Test::HasFailure();
    });
    if (result == SceneResult::Impossible) GTEST_SKIP() << "needs a network of its own";
    EXPECT_EQ(result, SceneResult::Passed);
}

}  // namespace
}  // namespace Conformance
