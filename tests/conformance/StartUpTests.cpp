#include <Platform/System.h>

#include <atomic>
#include <thread>

#include "Scene.h"

namespace Conformance {
namespace {

struct VersionRow {
    unsigned short requested;
    unsigned short negotiated;

    friend void PrintTo(const VersionRow& row, std::ostream* stream) {
        *stream << (row.requested & 0xFF) << '.' << (row.requested >> 8);
    }
};

class StartUpVersion : public testing::TestWithParam<VersionRow> {};

TEST_P(StartUpVersion, AnswersTheHighestVersionNotAboveTheRequested) {
    Winsock::StartupData data;
    ASSERT_TRUE(Answers(0, Winsock::WSAStartup(GetParam().requested, &data)));
    EXPECT_EQ(data.version, GetParam().negotiated);
    EXPECT_EQ(data.highestVersion, 0x202);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
}

INSTANTIATE_TEST_SUITE_P(Versions, StartUpVersion,
                         testing::Values(VersionRow{0x001, 0x001}, VersionRow{0x101, 0x101},
                                         VersionRow{0x201, 0x101}, VersionRow{0x002, 0x002},
                                         VersionRow{0x102, 0x102}, VersionRow{0x202, 0x202},
                                         VersionRow{0x302, 0x202}, VersionRow{0x003, 0x202}));

TEST(StartUp, RefusesMajorVersionZeroButTellsItsVersions) {
    Winsock::StartupData data;
    EXPECT_TRUE(Answers(10092, Winsock::WSAStartup(0x0100, &data)));
    EXPECT_EQ(data.version, 0x202);
    EXPECT_EQ(data.highestVersion, 0x202);
    EXPECT_TRUE(FailsWith(10093, Winsock::WSACleanup()));
}

TEST(StartUp, RefusesNullDataWithoutCounting) {
    EXPECT_TRUE(Answers(10014, Winsock::WSAStartup(0x202, nullptr)));
    EXPECT_TRUE(Answers(10092, Winsock::WSAStartup(0x000, nullptr)));
    EXPECT_TRUE(FailsWith(10093, Winsock::WSACleanup()));
}

TEST(StartUp, LeavesTheLastErrorAlone) {
    System::RestoreErrorNumbers({.winsock = 1234, .system = 0});
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    EXPECT_EQ(Winsock::WSAGetLastError(), 1234);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
}

TEST(StartUp, CallsBeforeItFail) {
    char name[256];
    const char address[4] = {127, 0, 0, 1};
    EXPECT_TRUE(FailsWith(10093, Winsock::socket(2, 1, 0)));
    EXPECT_TRUE(FailsWith(10093, Winsock::WSACleanup()));
    EXPECT_TRUE(FailsWith(10093, Winsock::gethostname(name, sizeof name), "names before start-up"));
    EXPECT_TRUE(FailsWith(10093, Winsock::gethostbyname("localhost")));
    EXPECT_TRUE(FailsWith(10093, Winsock::gethostbyaddr(address, 4, 2), "names before start-up"));
    EXPECT_TRUE(FailsWith(10093, Winsock::closesocket(5)));
    EXPECT_TRUE(FailsWith(10093, Winsock::recv(5, name, 1, 0), "transfer before start-up"));
    EXPECT_TRUE(FailsWith(10093, Winsock::send(5, name, 1, 0), "transfer before start-up"));
    const Winsock::AddressIpv4 to = Loopback(9);
    EXPECT_TRUE(FailsWith(10093, Winsock::recvfrom(5, name, 1, 0, nullptr, nullptr),
                          "transfer before start-up"));
    EXPECT_TRUE(FailsWith(10093, Winsock::sendto(5, name, 1, 0, &to, sizeof to),
                          "transfer before start-up"));
    EXPECT_TRUE(
        FailsWith(10093, Winsock::setsockopt(5, 0, 12, name, 8), "transfer before start-up"));
    EXPECT_TRUE(FailsWith(10093, Winsock::select(0, nullptr, nullptr, nullptr, nullptr),
                          "select before start-up"));
}

TEST(StartUp, DottedTextsAreReadBeforeIt) {
    EXPECT_EQ(Winsock::inet_addr("1.2.3.4"), 0x04030201U);
}

TEST(StartUpAndCleanUp, AnInnerOneLeavesSocketsOpen) {
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    const OwnedSocket socket = NewBoundDatagram();
    ASSERT_EQ(Winsock::WSAStartup(0x101, &data), 0);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
    EXPECT_NE(LocalPort(socket), 0U);
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
}

TEST(StartUpAndCleanUp, TheLastOneClosesAllSockets) {
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    Pair pair = NewConnectedPair();
    const Winsock::Handle client = pair.client.Take();
    const Winsock::Handle server = pair.server.Take();
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
    EXPECT_TRUE(FailsWith(10093, Winsock::send(client, "x", 1, 0), "transfer before start-up"));

    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    EXPECT_TRUE(FailsWith(10038, Winsock::send(client, "x", 1, 0)));
    EXPECT_TRUE(FailsWith(10038, Winsock::closesocket(server)));
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
}

TEST(StartUpAndCleanUp, TheLastOneEndsConnections) {
    Winsock::StartupData data;
    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    OwnedSocket listener = NewListener();
    const unsigned int port = LocalPort(listener);
    listener.Take();
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));

    ASSERT_EQ(Winsock::WSAStartup(0x202, &data), 0);
    EXPECT_TRUE(FailsWith(10061, Connect(NewStream(), Loopback(port))));
    EXPECT_TRUE(Succeeds(Winsock::WSACleanup()));
}

using StartUpAndLastError = Started;

// Between the two looks at its last error this thread makes no call, not even to wait.
TEST_F(StartUpAndLastError, IsEachThreadsOwn) {
    int atStart = -1;
    int afterFailure = -1;
    std::atomic<bool> begun = false;
    std::atomic<bool> done = false;
    std::thread other([&] {
        while (!begun) {
        }
        atStart = Winsock::WSAGetLastError();
        Winsock::socket(2, 7, 0);
        afterFailure = Winsock::WSAGetLastError();
        done = true;
    });
    EXPECT_EQ(Winsock::closesocket(Winsock::InvalidSocket), -1);
    begun = true;
    while (!done) {
    }
    EXPECT_EQ(Winsock::WSAGetLastError(), 10038);
    other.join();
    EXPECT_EQ(atStart, 0);
    EXPECT_EQ(afterFailure, 10044);
}

TEST_F(StartUpAndLastError, IsSavedAndRestoredWithTheSystemsOwn) {
    EXPECT_EQ(Winsock::closesocket(Winsock::InvalidSocket), -1);
    const System::ErrorNumbers numbers = System::SaveErrorNumbers();
    EXPECT_EQ(numbers.winsock, 10038);
    NewStream();
    System::RestoreErrorNumbers(numbers);
    EXPECT_EQ(Winsock::WSAGetLastError(), 10038);
}

}  // namespace
}  // namespace Conformance
