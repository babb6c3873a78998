// The socket layer comes up and goes down.
#include <memory>
#include <thread>

#include "ModuleTest.h"
#include "unit/socket/ErrorTableExpectations.h"

namespace ModuleTests {
namespace {

class StartUp : public ModuleTest {};

constexpr char NotStarted[] = "VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed";
constexpr char NotCleanedUp[] = "VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed";

void BringUp() {
    const SocketInitialization layer;
}

TEST_F(StartUp, AsksForVersion22OnceAndCleansUpOnce) {
    {
        const SocketInitialization first;
        const SocketInitialization second;
        EXPECT_EQ(Transcript(), Lines{"WSAStartup(0x0202)"});
        ClearTranscript();
    }
    EXPECT_EQ(Transcript(), Lines{"WSACleanup()"});
}

TEST_F(StartUp, ComesUpAgain) {
    for (int round = 0; round < 3; ++round)
        BringUp();
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0202)", "WSACleanup()", "WSAStartup(0x0202)",
                                   "WSACleanup()", "WSAStartup(0x0202)", "WSACleanup()"}));
}

// The number is the call's result; there is no record, as the layer is not up.
TEST_F(StartUp, EachFailureIsThrownWithTheNumberThatWasReturned) {
    SetLastError(Disturbance);
    ExpectEachFailure({.failWith = [](int number) { On::WSAStartup().Fails(number); },
                       .operation = BringUp,
                       .head = NotStarted,
                       .calls = {"WSAStartup(0x0202)"},
                       .isLogged = false},
                      ErrorNumbersWithout({0}));
    BringUp();
}

TEST_F(StartUp, AnotherVersionIsRefusedWithoutCleaningUp) {
    const Failure refused{FoundationTests::ExpectedFailureText(NotStarted, 0), -1};
    for (const auto& [version, highest] :
         {std::pair{0x0101, 0x0202}, {0x0202, 0x0101}, {0x0302, 0x0302}, {0x0002, 0x0202}}) {
        ClearTranscript();
        On::WSAStartup().Returns(0, static_cast<unsigned short>(version),
                                 static_cast<unsigned short>(highest));
        EXPECT_EQ(FailureOf(BringUp), refused);
        EXPECT_EQ(Transcript(), Lines{"WSAStartup(0x0202)"});
        ForgetInLedger("start-up");
    }
}

TEST_F(StartUp, AFailedCleanUpIsRecordedAndTheLayerIsDown) {
    Loopback::EnableOnly({Loopback::Error});
    On::WSACleanup().Fails(10050);
    BringUp();
    const std::u16string failure = FoundationTests::ExpectedFailureText(NotCleanedUp, 10050);
    EXPECT_EQ(TakeRecords(),
              (Records{{Loopback::Error, u"Cannot cleanup socket layer: " + failure}}));
    BringUp();
    EXPECT_EQ(CountOf("WSAStartup"), 2);
}

// One thread is inside the start-up; the other one yields until it is through.
TEST_F(StartUp, WhoFindsItLockedYields) {
    std::thread other;
    Observe("WSAStartup", [&](const Event&) {
        if (!other.joinable()) other = std::thread(BringUp);
        EXPECT_TRUE(Loopback::Eventually([] { return CountOf("Sleep") > 2; }));
    });
    BringUp();
    other.join();
    EXPECT_EQ(LastEventOf("Sleep").text, "Sleep(0)");
}

}  // namespace
}  // namespace ModuleTests
