// Connect calls that fail for what the system has, or that somebody else was told of.
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <fstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

int Number(const OwnedSocket& socket) {
    return static_cast<int>(socket.Get());
}

// As somebody does who has the descriptor too.
int TakeReport(int descriptor) {
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length);
    return error;
}

int Repetitions(const OwnedSocket& socket) {
    int repetitions = 0;
    socklen_t length = sizeof repetitions;
    ::getsockopt(Number(socket), IPPROTO_TCP, TCP_SYNCNT, &repetitions, &length);
    return repetitions;
}

bool SetSystem(const std::string& name, const std::string& value) {
    return static_cast<bool>(std::ofstream("/proc/sys/net/" + name) << value << std::flush);
}

void PlayInOwnNetwork(const std::function<bool()>& scene) {
    const SceneResult result = RunWithNames("", "host", scene);
    if (result == SceneResult::Impossible) GTEST_SKIP() << "no network of its own here";
    EXPECT_EQ(result, SceneResult::Passed);
}

using FailedConnectOutcomeTaken = Started;

TEST_F(FailedConnectOutcomeTaken, ByAnotherIsAFailureThatIsToldStill) {
    const OwnedSocket target = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    const OwnedSocket nobody = NewBoundStream();
    ASSERT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(nobody))));
    AwaitEnd(socket.Get());
    ASSERT_EQ(TakeReport(Number(socket)), ECONNREFUSED);
    Winsock::HandleSet failed = SetOf({socket.Get()});
    EXPECT_TRUE(Succeeds(Winsock::select(0, nullptr, nullptr, &failed, &AtOnce), 1));
    EXPECT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(target))));
}

// The wait of an interrupted connect call is over, but somebody else asked for the reason first.
TEST_F(FailedConnectOutcomeTaken, ByAnotherDuringABlockingCallIsARefusal) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    int taken = 0;
    const HookedCall asked(SystemCall::Ppoll, [&](const Call& call) {
        const Word ready = call.Make();
        if (ready > 0) taken = TakeReport(Number(socket));
        return ready;
    });
    const SignalStorm storm([&] { listener.Close(); });
    EXPECT_TRUE(FailsWith(10061, Connect(socket, Loopback(listener.Port()))));
    EXPECT_EQ(taken, ECONNREFUSED);
}

TEST_F(FailedConnectOutcomeTaken, ByOneOfManyThreadsIsEverybodys) {
    const OwnedSocket nobody = NewBoundStream();
    for (int round = 0; round < 50; ++round) {
        const OwnedSocket socket = NewBoundStream();
        const unsigned int port = LocalPort(socket);
        SetNonBlocking(socket);
        std::atomic<bool> isOver = false;
        std::vector<std::thread> threads(4);
        for (std::thread& thread : threads) {
            thread = std::thread([&] {
                while (!isOver)
                    EXPECT_TRUE(FailsWith(10057, TryReceive(socket)));
            });
        }
        EXPECT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(nobody))));
        Winsock::HandleSet failed = SetOf({socket.Get()});
        EXPECT_TRUE(Succeeds(Winsock::select(0, nullptr, nullptr, &failed, &Minute), 1));
        isOver = true;
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(LocalPort(socket), port);
        EXPECT_TRUE(FailsWith(10048, Bind(NewStream(), Loopback(port))));
    }
}

using FailedConnectAtOnce = Started;

TEST_F(FailedConnectAtOnce, OfANonBlockingSocketIsToldAtOnce) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    SetNonBlocking(socket);
    const FailingCall fails(SystemCall::Connect, ENETUNREACH, {.count = 1});
    EXPECT_TRUE(FailsWith(10051, Connect(socket, LocalAddress(listener))));
    EXPECT_TRUE(FailsWith(10035, Connect(socket, LocalAddress(listener))));
    EXPECT_EQ(ReadyFor(socket, Minute), "w");
}

using FailedConnectReset = Started;

TEST_F(FailedConnectReset, IsAResetOfTheConnection) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    {
        const FailingCall resets(SystemCall::Connect, ECONNRESET, {.count = 1});
        EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
    }
    EXPECT_TRUE(FailsWith(10054, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10056, Connect(socket, LocalAddress(listener))));
}

TEST_F(FailedConnectReset, IsAnAbortIfThePeerHadEndedBefore) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    {
        const FailingCall resets(SystemCall::Connect, EPIPE, {.count = 1});
        EXPECT_TRUE(Succeeds(Connect(socket, LocalAddress(listener))));
    }
    EXPECT_TRUE(FailsWith(10053, TryReceive(socket)));
    EXPECT_TRUE(FailsWith(10053, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10056, Connect(socket, LocalAddress(listener))));
}

using FailedConnectWait = Started;

TEST_F(FailedConnectWait, LeavesTheConnectCallUnfinished) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    {
        const FailingCall interrupted(SystemCall::Connect, EINTR, {.count = 1});
        const FailingCall fails(SystemCall::Ppoll, ENOMEM);
        EXPECT_TRUE(FailsWith(10055, Connect(socket, Loopback(listener.Port()))));
    }
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
}

// The connection is there, but the system does not tell.
TEST_F(FailedConnectWait, ForTheStateLeavesTheConnectCallUnfinished) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket socket = NewStream();
    {
        const FailingCall untold(SystemCall::Getsockopt, ENOBUFS, {.option = TCP_INFO});
        const HookedCall interrupted(SystemCall::Connect, [](const Call& call) {
            call.Make();
            return call.Fail(EINTR);
        });
        EXPECT_TRUE(FailsWith(10055, Connect(socket, LocalAddress(listener))));
        EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
        EXPECT_TRUE(FailsWith(10037, Connect(socket, LocalAddress(listener))));
    }
    EXPECT_TRUE(Succeeds(Send(socket, "x"), 1));
}

using FailedConnectTakenPort = Started;

// Between the refusal and the answer somebody else was quicker.
TEST_F(FailedConnectTakenPort, IsReplacedByAnotherSoThatTheNameIsTrue) {
    const OwnedSocket socket = NewBoundStream();
    const unsigned int port = LocalPort(socket);
    const OwnedSocket nobody = NewBoundStream();
    {
        const FailingCall taken(SystemCall::Bind, EADDRINUSE, {.count = 1});
        EXPECT_TRUE(FailsWith(10061, Connect(socket, LocalAddress(nobody))));
    }
    EXPECT_NE(LocalPort(socket), port);
    ASSERT_TRUE(Succeeds(Winsock::listen(socket.Get(), 5)));
    EXPECT_TRUE(Succeeds(Connect(NewStream(), LocalAddress(socket))));
}

// Only a port that is taken has others in its place.
TEST_F(FailedConnectTakenPort, IsNotReplacedForAnotherReason) {
    const OwnedSocket nobody = NewBoundStream();
    for (const int error : {ENOMEM, ENOBUFS}) {
        const OwnedSocket socket = NewStream();
        const FailingCall fails(SystemCall::Bind, error);
        EXPECT_TRUE(FailsWith(10061, Connect(socket, LocalAddress(nobody))));
        EXPECT_EQ(fails.Seen(), 1U);
    }
}

using FailedConnectObstacle = Started;

// A socket of datagrams looks for it, and no program that is started meanwhile gets that.
TEST_F(FailedConnectObstacle, IsLookedForWithASocketOfItsOwn) {
    constexpr std::pair<int, int> rows[] = {{EADDRNOTAVAIL, 10048}, {EACCES, 10065}};
    for (const auto& [error, winsock] : rows) {
        const OwnedSocket socket = NewStream();
        const FailingCall fails(SystemCall::Connect, error, {.count = 1});
        const HookedCall makes(SystemCall::Socket, [](const Call& call) {
            EXPECT_EQ(call.Argument(1), Word{SOCK_DGRAM | SOCK_CLOEXEC});
            EXPECT_EQ(call.Argument(2), Word{0});
            return call.Make();
        });
        EXPECT_TRUE(FailsWith(winsock, Connect(socket, Loopback(9)))) << error;
        EXPECT_EQ(makes.Seen(), 1U);
    }
}

using FailedConnectUsedUpPorts = Started;

// The system has one port to give away, which is given away.
bool ConnectsWithoutPorts() {
    const OwnedSocket listener = NewStream();
    EXPECT_TRUE(Succeeds(Bind(listener, Loopback(7000))));
    EXPECT_TRUE(Succeeds(Winsock::listen(listener.Get(), 5)));
    EXPECT_TRUE(SetSystem("ipv4/ip_local_port_range", "7001 7001"));
    const OwnedSocket holder = NewBoundStream();
    EXPECT_EQ(LocalPort(holder), 7001U);
    const OwnedSocket socket = NewStream();
    EXPECT_TRUE(FailsWith(10048, Connect(socket, Loopback(7000))));
    EXPECT_TRUE(FailsWith(10048, Bind(socket, Loopback(0))));
    EXPECT_TRUE(Succeeds(SetOption(socket, Winsock::OptionReuseAddress, 1)));
    EXPECT_TRUE(FailsWith(10048, Bind(socket, Loopback(0))));
    return !testing::Test::HasFailure();
}

TEST_F(FailedConnectUsedUpPorts, AreToldAsPortsInUse) {
    PlayInOwnNetwork(ConnectsWithoutPorts);
}

bool ConnectsWithoutOwnAddress() {
    EXPECT_TRUE(SetSystem("ipv6/conf/lo/disable_ipv6", "1"));
    EXPECT_TRUE(FailsWith(10049, Connect(NewStream(23), LoopbackIpv6(7000))));
    return !testing::Test::HasFailure();
}

TEST_F(FailedConnectUsedUpPorts, AreNotToBlameWhereThereIsNoAddress) {
    PlayInOwnNetwork(ConnectsWithoutOwnAddress);
}

using FailedConnectPatience = Started;

TEST_F(FailedConnectPatience, OfAConnectCallIsThatOfWinsock) {
    const OwnedSocket listener = NewListener();
    const OwnedSocket client = NewStream();
    ASSERT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
    EXPECT_EQ(Repetitions(client), std::min(Repetitions(NewStream()), 3));
}

TEST_F(FailedConnectPatience, ThatCannotBeAskedForOrSetIsTheSystems) {
    const OwnedSocket listener = NewListener();
    for (const SystemCall call : {SystemCall::Getsockopt, SystemCall::Setsockopt}) {
        const FailingCall fails(call, EPERM, {.level = IPPROTO_TCP, .option = TCP_SYNCNT});
        EXPECT_TRUE(Succeeds(Connect(NewStream(), LocalAddress(listener))));
        EXPECT_EQ(fails.Seen(), 1U);
    }
}

TEST_F(FailedConnectPatience, OfTheHostCountsWhereItIsLess) {
    PlayInOwnNetwork([] {
        EXPECT_TRUE(SetSystem("ipv4/tcp_syn_retries", "1"));
        const OwnedSocket listener = NewListener();
        const OwnedSocket client = NewStream();
        EXPECT_TRUE(Succeeds(Connect(client, LocalAddress(listener))));
        EXPECT_EQ(Repetitions(client), 1);
        return !HasFailure();
    });
}

}  // namespace
}  // namespace Conformance
