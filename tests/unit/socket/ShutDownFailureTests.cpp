// Shut-down that fails.

#include <Socket/SocketAPI.h>

#include <optional>

#include "ErrorTableExpectations.h"
#include "FailureRecordExpectations.h"
#include "StartUpFixture.h"

namespace FoundationTests {
namespace {

using Allocations::FailNth;
namespace SocketAPI = VelNet::SocketAPI;

constexpr char ShutDownHead[] = "VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed";

class ShutDownFailure : public StartUpTest {
protected:
    // Starts and stops the layer with WSACleanup failing with the number. Forgets the start.
    static void FailShutDown(int number) {
        On::WSACleanup().Fails(number);
        const SocketInitialization initialization;
        ClearTranscript();
    }
};

Lines FailedShutDownLines(const Lines& between) {
    return Lines{"WSACleanup()", "WSAGetLastError()"} + between + UndoingLines();
}

TEST_F(ShutDownFailure, IsLoggedAndShutDownGoesOn) {
    EnableRouter("Error");
    FailShutDown(10091);
    ExpectOneRecord("Cannot cleanup socket layer: %1",
                    u"VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed, errno = "
                    u"\u276B Network subsystem is unavailable");
    EXPECT_EQ(Transcript(),
              FailedShutDownLines({"LogMessage(Error, \"Cannot cleanup socket layer: "
                                   "VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed, "
                                   "errno = \\u276B Network subsystem is unavailable\")"}));
}

TEST_F(ShutDownFailure, IsLoggedWithEveryNumber) {
    EnableRouter("Error");
    std::vector<std::u16string> expected;
    for (const int number : ErrorNumbers()) {
        FailShutDown(number);
        expected.push_back(u"Cannot cleanup socket layer: " +
                           ExpectedFailureText(ShutDownHead, number));
        ExpectLayerDown();
    }
    EXPECT_EQ(LoggedTexts("Error"), expected);
}

TEST_F(ShutDownFailure, IsNotLoggedWhenTheErrorRouterIsOff) {
    EnableAllRouters();
    SetRouterFlag("Error", 0);
    FailShutDown(10091);
    EXPECT_EQ(Transcript(), FailedShutDownLines({}));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(ShutDownFailure, IsLoggedUnderTheLockWhileTheStateIsPublished) {
    EnableRouter("Error");
    bool seen = false;
    Observe("LogMessage", [&](const Event&) {
        seen = g_startUpLock == 0x12345678 && g_socketLayer != nullptr &&
               g_socketInitializationCount == 0;
    });
    FailShutDown(10091);
    EXPECT_TRUE(seen);
}

TEST_F(ShutDownFailure, LosesWhatTheLogThrows) {
    EnableRouter("Error");
    On::LogMessage().Throws(4711);
    FailShutDown(10091);
    EXPECT_EQ(TranscriptWithout({"LogMessage"}), FailedShutDownLines({}));
    EXPECT_EQ(CountOf("LogMessage"), 1);
}

TEST_F(ShutDownFailure, IsLostWhenMemoryIs) {
    EnableRouter("Error");
    bool happened = true;
    std::size_t number = 0;
    while (happened) {
        ASSERT_LT(++number, 20U);
        On::WSACleanup().Fails(10091);
        std::optional<SocketInitialization> initialization(std::in_place);
        ClearTranscript();
        {
            const FailNth failing(number);
            initialization.reset();
            happened = failing.Happened();
        }
        EXPECT_EQ(TranscriptWithout({"LogMessage"}), FailedShutDownLines({})) << number;
        EXPECT_EQ(CountOf("LogMessage"), happened ? 0 : 1) << number;
        ExpectLayerDown();
    }
    EXPECT_GT(number, 1U);
}

TEST_F(ShutDownFailure, IsMinusOneAndNothingElse) {
    EnableRouter("Error");
    for (const int result : {1, 5, -2, 10091}) {
        On::WSACleanup().Returns(result);
        const SocketInitialization initialization;
        ClearTranscript();
    }
    EXPECT_EQ(Transcript(), ShutDownLines());
    EXPECT_EQ(LoggedMessages().size(), 0U);
}

TEST_F(ShutDownFailure, OfAStateThatIsNotPublishedIsNotLogged) {
    EnableAllRouters();
    const StateMemory memory;
    SocketAPI::Initialize(*memory);
    ClearTranscript();
    On::WSACleanup().Fails(10091);
    SocketAPI::Finalize(*memory);
    EXPECT_EQ(Transcript(), FailedShutDownLines({}));
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(ShutDownFailure, LeavesTheLayerReadyToStart) {
    FailShutDown(10091);
    ExpectLayerDown();
    ClearTranscript();
    { const SocketInitialization next; }
    EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
}

}  // namespace
}  // namespace FoundationTests
