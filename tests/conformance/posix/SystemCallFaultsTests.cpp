// That calls fail when a test asks for it, and only then: what the other tests of faults rest upon.
#include "support/posix/SystemCallFaults.h"

#include <fcntl.h>
#include <netdb.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

#include "conformance/Scene.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

using SystemCallFaults = Started;

int ReuseAddress(const OwnedSocket& socket) {
    return SetOption(socket, Winsock::OptionReuseAddress, 1);
}

TEST_F(SystemCallFaults, EndWithTheirScope) {
    const OwnedSocket socket = NewBoundStream();
    {
        const FailingCall fails(SystemCall::Listen, ENOBUFS);
        EXPECT_TRUE(FailsWith(10055, Winsock::listen(socket.Get(), 1)));
        EXPECT_TRUE(FailsWith(10055, Winsock::listen(socket.Get(), 1)));
        EXPECT_EQ(fails.Seen(), 2U);
    }
    EXPECT_TRUE(Succeeds(Winsock::listen(socket.Get(), 1)));
}

TEST_F(SystemCallFaults, HitTheCallsThatAreMeant) {
    const OwnedSocket socket = NewBoundStream();
    const FailingCall fails(SystemCall::Listen, ENOBUFS, {.first = 2, .count = 2});
    EXPECT_TRUE(Succeeds(Winsock::listen(socket.Get(), 1)));
    EXPECT_TRUE(FailsWith(10055, Winsock::listen(socket.Get(), 1)));
    EXPECT_TRUE(FailsWith(10055, Winsock::listen(socket.Get(), 1)));
    EXPECT_TRUE(Succeeds(Winsock::listen(socket.Get(), 1)));
    EXPECT_EQ(fails.Seen(), 4U);
}

TEST_F(SystemCallFaults, KnowOptionsAndRequestsApart) {
    const OwnedSocket socket = NewDatagram();
    const FailingCall option(SystemCall::Setsockopt, ENOBUFS,
                             {.level = SOL_SOCKET, .option = SO_BROADCAST});
    EXPECT_TRUE(Succeeds(ReuseAddress(socket)));
    EXPECT_TRUE(FailsWith(10055, SetOption(socket, Winsock::OptionBroadcast, 1)));
    const FailingCall request(SystemCall::Ioctl, ENOBUFS, {.option = FIONREAD});
    SetNonBlocking(socket);
    unsigned int count = 0;
    EXPECT_TRUE(FailsWith(
        10055, Winsock::ioctlsocket(socket.Get(), Winsock::CommandBytesAvailable, &count)));
}

TEST_F(SystemCallFaults, KnowSocketsApart) {
    const OwnedSocket socket = NewStream();
    const OwnedSocket other = NewStream();
    const FailingCall fails(SystemCall::Setsockopt, ENOBUFS,
                            {.descriptor = static_cast<int>(socket.Get())});
    EXPECT_TRUE(FailsWith(10055, ReuseAddress(socket)));
    EXPECT_TRUE(Succeeds(ReuseAddress(other)));
}

TEST_F(SystemCallFaults, BelongToTheThreadUnlessAllAreMeant) {
    const OwnedSocket socket = NewStream();
    const auto elsewhere = [&socket](auto check) {
        std::thread([&] { check(ReuseAddress(socket)); }).join();
    };
    {
        const FailingCall fails(SystemCall::Setsockopt, ENOBUFS);
        elsewhere([](int result) { EXPECT_TRUE(Succeeds(result)); });
    }
    const FailingCall fails(SystemCall::Setsockopt, ENOBUFS, {.inAnyThread = true});
    elsewhere([](int result) { EXPECT_TRUE(FailsWith(10055, result)); });
}

TEST_F(SystemCallFaults, RunWhateverATestPutsAroundACall) {
    const Pair pair = NewConnectedPair();
    const HookedCall hook(SystemCall::Recv, [&pair](const Call& call) {
        EXPECT_TRUE(Succeeds(Send(pair.client, "in time"), 7));
        const Word received = call.Make();
        EXPECT_EQ(call.Argument(0), static_cast<Word>(pair.server.Get()));
        EXPECT_EQ(std::string(call.Pointer<char>(1), 7), "in time");
        call.Pointer<char>(1)[0] = 'I';
        return received;
    });
    EXPECT_EQ(Receive(pair.server), "In time");
}

TEST_F(SystemCallFaults, DoNotMeetWhatAHookCalls) {
    const OwnedSocket socket = NewStream();
    const HookedCall hook(SystemCall::Setsockopt, [&socket](const Call& call) {
        EXPECT_TRUE(Succeeds(ReuseAddress(socket)));
        return call.Fail(ENOBUFS);
    });
    EXPECT_TRUE(FailsWith(10055, ReuseAddress(socket)));
    EXPECT_EQ(hook.Seen(), 1U);
}

TEST_F(SystemCallFaults, ActInTheInnermostScope) {
    const OwnedSocket socket = NewBoundStream();
    const FailingCall outer(SystemCall::Listen, ENOBUFS);
    const FailingCall inner(SystemCall::Listen, EPERM, {.count = 1});
    EXPECT_TRUE(FailsWith(10013, Winsock::listen(socket.Get(), 1)));
    EXPECT_TRUE(FailsWith(10055, Winsock::listen(socket.Get(), 1)));
    EXPECT_EQ(outer.Seen(), 2U);
    EXPECT_EQ(inner.Seen(), 2U);
}

TEST_F(SystemCallFaults, CountWithoutDoingAnything) {
    const OwnedSocket socket = NewDatagram();
    const CountedCall count(SystemCall::Setsockopt);
    EXPECT_TRUE(Succeeds(ReuseAddress(socket)));
    EXPECT_EQ(count.Seen(), 1U);
}

TEST_F(SystemCallFaults, AreToldAsEachFunctionTellsThem) {
    const FailingCall lists(SystemCall::Getaddrinfo, EAI_AGAIN);
    EXPECT_EQ(::getaddrinfo("localhost", nullptr, nullptr, nullptr), EAI_AGAIN);
    const FailingCall texts(SystemCall::Getnameinfo, ENOMEM);
    EXPECT_EQ(::getnameinfo(nullptr, 0, nullptr, 0, nullptr, 0, 0), EAI_SYSTEM);
    EXPECT_EQ(errno, ENOMEM);
    const FailingCall variables(SystemCall::Getenv, 0);
    EXPECT_EQ(std::getenv("PATH"), nullptr);
    EXPECT_EQ(::secure_getenv("PATH"), nullptr);
    const FailingCall files(SystemCall::Open, EMFILE);
    EXPECT_EQ(::open("/dev/null", O_RDONLY | O_CLOEXEC), -1);
    EXPECT_EQ(errno, EMFILE);
    const FailingCall numbers(SystemCall::Syscall, ENOSYS, {.option = 39});
    EXPECT_EQ(::syscall(39), -1);
    EXPECT_EQ(errno, ENOSYS);
}

TEST_F(SystemCallFaults, TellAFailedLookUpAsTheResolverDoes) {
    hostent room = {};
    hostent* found = &room;
    int error = 0;
    char buffer[1] = {};
    const auto lookUp = [&] {
        return ::gethostbyname2_r("localhost", AF_INET, &room, buffer, sizeof buffer, &found,
                                  &error);
    };
    {
        const FailingCall fails(SystemCall::Gethostbyname, TRY_AGAIN);
        EXPECT_EQ(lookUp(), EAGAIN);
        EXPECT_EQ(found, nullptr);
        EXPECT_EQ(error, TRY_AGAIN);
    }
    const FailingCall fails(SystemCall::Gethostbyname, ENOMEM);
    EXPECT_EQ(lookUp(), ENOMEM);
    EXPECT_EQ(error, NETDB_INTERNAL);
}

TEST_F(SystemCallFaults, LeaveTheErrorNumberAlone) {
    const OwnedSocket socket = NewStream();
    const CountedCall count(SystemCall::Setsockopt);
    const int on = 1;
    errno = ERANGE;
    ::setsockopt(static_cast<int>(socket.Get()), SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(count.Seen(), 1U);
}

}  // namespace
}  // namespace Conformance
