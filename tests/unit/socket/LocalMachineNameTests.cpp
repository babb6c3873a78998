// SocketAddress::GetLocalMachineName.
#include <algorithm>

#include "SocketTrials.h"

namespace SocketTests {
namespace {

class LocalMachineName : public SocketTest {
protected:
    static std::string Ask() { return SocketAddress::GetLocalMachineName().c_str(); }
};

TEST_F(LocalMachineName, AsksTheSystemOnceWithRoomForTwoHundredBytes) {
    EXPECT_EQ(Ask(), "scripted-host");
    EXPECT_EQ(Transcript(), Lines{"gethostname(200)"});
}

TEST_F(LocalMachineName, RoomIsZeroedBeforehand) {
    bool isZeroed = false;
    Observe("gethostname", [&](const Event& event) {
        const auto* const room = static_cast<const char*>(event.pointer);
        isZeroed = std::all_of(room, room + 200, [](char byte) { return byte == 0; });
    });
    Ask();
    EXPECT_TRUE(isZeroed);
}

TEST_F(LocalMachineName, NameIsReturnedWhateverItsBytes) {
    const std::string longest(199, 'n');
    On::Gethostname().Returns("").Returns("\xC3\xA9\xFF").Returns(longest);
    EXPECT_EQ(Ask(), "");
    EXPECT_EQ(Ask(), "\xC3\xA9\xFF");
    EXPECT_EQ(Ask(), longest);
}

TEST_F(LocalMachineName, EachFailureIsReported) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostname().Fails(number); },
        .operation = [] { Ask(); },
        .text = "VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
                "configured on this machine.",
        .calls = {"gethostname(200)", "WSAGetLastError()"},
    });
}

TEST_F(LocalMachineName, FailureIsToldWithPointAndCommaAndTheNumberAsOneUnit) {
    On::Gethostname().Fails(10050);
    EXPECT_EQ(Catch([] { Ask(); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
                      u"configured on this machine., errno = \u2742 Network is down",
                      10050}));
}

TEST_F(LocalMachineName, NumberWithoutLowBitsEndsTheText) {
    On::Gethostname().Fails(65536);
    EXPECT_EQ(Catch([] { Ask(); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
                      u"configured on this machine., errno = ",
                      -1}));
}

TEST_F(LocalMachineName, NameTooLongForTheRoomIsAFailure) {
    On::Gethostname().Returns(std::string(200, 'n'));
    EXPECT_EQ(Catch([] { Ask(); }).code, 10014);
}

TEST_F(LocalMachineName, DoesNotStartTheLayer) {
    BringLayerDown();
    ClearTranscript();
    EXPECT_EQ(Ask(), "scripted-host");
    EXPECT_EQ(Transcript(), Lines{"gethostname(200)"});
}

TEST_F(LocalMachineName, ExhaustedMemoryLeavesNothing) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [] { SocketAddress::GetLocalMachineName(); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 1U);
    n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Gethostname().Fails(10050);
        exhausted = RunsOutOfMemory(n, [] { Catch([] { Ask(); }); });
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 2U);
}

}  // namespace
}  // namespace SocketTests
