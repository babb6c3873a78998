// Start-up that fails.

#include <Platform/Winsock.h>
#include <Socket/SocketAPI.h>
#include <VelBase/ExceptionImpl.h>
#include <VelNet/Exception.h>

#include <memory>
#include <optional>
#include <stdexcept>

#include "ErrorTableExpectations.h"
#include "SocketFixture.h"
#include "StartUpFixture.h"

namespace FoundationTests {
namespace {

using Allocations::FailNth;
using Allocations::Mark;
using SocketTests::Catch;
using SocketTests::Caught;
using VelBase::Message;
using VelNet::Exception;
namespace SocketAPI = VelNet::SocketAPI;

constexpr char StartUpHead[] = "VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed";

class StartUpFailure : public StartUpTest {
protected:
    // The layer is down and another object can bring it up.
    static void ExpectNextObjectStarts() {
        ExpectLayerDown();
        ClearTranscript();
        {
            const SocketInitialization next;
            EXPECT_EQ(g_socketInitializationCount, 1);
        }
        EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
        ClearTranscript();
    }
};

Caught StartUpFailureOf() {
    return Catch([] { const SocketInitialization initialization; });
}

TEST_F(StartUpFailure, OfWinsockIsThrownWithTextAndCode) {
    On::WSAStartup().Returns(10091);
    EXPECT_EQ(StartUpFailureOf(),
              (Caught{true,
                      u"VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = "
                      u"\u276B Network subsystem is unavailable",
                      10091}));
    EXPECT_EQ(Transcript(), FailedStartUpLines());
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfWinsockIsToldForEveryNumber) {
    for (const int number : ErrorNumbers()) {
        if (number == 0) continue;  // no failure
        ClearTranscript();
        SetLastError(number == 10013 ? 10014 : 10013);
        On::WSAStartup().Returns(number);
        EXPECT_EQ(StartUpFailureOf(), (Caught{true, ExpectedFailureText(StartUpHead, number),
                                              ExpectedRow(number).code}))
            << number;
        EXPECT_EQ(Transcript(), FailedStartUpLines()) << number;
        ExpectLayerDown();
    }
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfWinsockIsAFailureWhateverVersionItReports) {
    Observe("WSAStartup", [](const Event& event) {
        auto* const data = static_cast<Winsock::StartupData*>(const_cast<void*>(event.pointer));
        data->version = 0x0202;
        data->highestVersion = 0x0202;
    });
    for (const int number : {10092, 1, -1}) {
        On::WSAStartup().Returns(number);
        EXPECT_EQ(StartUpFailureOf(), (Caught{true, ExpectedFailureText(StartUpHead, number), -1}))
            << number;
    }
}

TEST_F(StartUpFailure, OtherVersionThanTwoTwoIsUnknownFailureWithoutCleanUp) {
    struct Versions {
        unsigned short version;
        unsigned short highest;
    };
    for (const auto& [version, highest] :
         {Versions{0x0102, 0x0202}, Versions{0x0201, 0x0202}, Versions{0x0002, 0x0202},
          Versions{0x0203, 0x0202}, Versions{0x0302, 0x0202}, Versions{0, 0x0202},
          Versions{0x0202, 0x0102}, Versions{0x0202, 0x0201}, Versions{0x0202, 0x0002},
          Versions{0x0202, 0x0203}, Versions{0x0202, 0x0302}, Versions{0x0202, 0},
          Versions{0x0202, 0xFFFF}, Versions{0xFFFF, 0x0202}, Versions{0x0101, 0x0101},
          Versions{0, 0}}) {
        ClearTranscript();
        On::WSAStartup().Returns(0, version, highest);
        EXPECT_EQ(StartUpFailureOf(),
                  (Caught{true,
                          u"VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, "
                          u"errno = ",
                          -1}))
            << version << ", " << highest;
        EXPECT_EQ(Transcript(), FailedStartUpLines());
        ForgetInLedger("start-up");
        ExpectLayerDown();
    }
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, ReportedVersionsStartEmpty) {
    int version = -1;
    Observe("WSAStartup", [&](const Event& event) {
        version = static_cast<const Winsock::StartupData*>(event.pointer)->version;
    });
    const SocketInitialization initialization;
    EXPECT_EQ(version, 0);
}

TEST_F(StartUpFailure, OfTheFirstStartUpIsNotLoggedBecauseNothingIsPublished) {
    EnableAllRouters();
    On::WSAStartup().Returns(10091);
    EXPECT_EQ(StartUpFailureOf(), (Caught{true, ExpectedFailureText(StartUpHead, 10091), 10091}));
    EXPECT_EQ(Transcript(), FailedStartUpLines());
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(StartUpFailure, ThatIsCaughtAsItsBaseLeavesTheLayerDown) {
    On::WSAStartup().Returns(10091);
    EXPECT_THROW(SocketInitialization(), Message);
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, HappensUnderTheLockAndIsCounted) {
    std::vector<unsigned int> locks;
    std::vector<int> counts;
    bool published = false;
    ObserveAll([&](const Event&) {
        locks.push_back(g_startUpLock);
        counts.push_back(g_socketInitializationCount);
        published = published || g_socketLayer != nullptr;
    });
    On::WSAStartup().Returns(10091);
    StartUpFailureOf();
    EXPECT_EQ(locks, std::vector<unsigned int>(15, 0x12345678));
    EXPECT_EQ(counts, std::vector<int>(15, 1));
    EXPECT_FALSE(published);
    ExpectLayerDown();
}

TEST_F(StartUpFailure, NullsEachRouterMemberBeforeItsRouterIsReleased) {
    On::WSAStartup().Returns(10091);
    const StateMemory memory;
    Lines wrong;
    Observe("~Router", [&](const Event& event) {
        for (const auto& [category, member] : RouterMembers)
            if (category == CategoryOf(event) && ((*memory).*member).Get() != nullptr)
                wrong.push_back(category);
    });
    EXPECT_THROW(SocketAPI::Initialize(*memory), Exception);
    EXPECT_EQ(CountOf("~Router"), 4);
    EXPECT_EQ(wrong, Lines());
}

TEST_F(StartUpFailure, OfManyTriesLeavesNothingBehind) {
    for (int round = 0; round < 5; ++round) {
        On::WSAStartup().Returns(10091);
        StartUpFailureOf();
        ExpectLayerDown();
    }
    ExpectNextObjectStarts();
}

// Fails each of the seven steps before Winsock in turn: the exception must come out as it was
// thrown, and what was built before it must be undone.
template <class Thrown, class Compare>
void ExpectEachStepPassesOn(const Thrown& thrown, Compare isSame) {
    for (std::size_t index = 0; index < BuildUpSteps.size(); ++index) {
        const BuildUpStep& step = BuildUpSteps[index];
        ClearTranscript();
        PlainAnswers(step.call).Passes(step.callsBefore).Throws(thrown);
        bool same = false;
        try {
            const SocketInitialization initialization;
            ADD_FAILURE() << "nothing thrown at " << step.line;
        } catch (const Thrown& caught) {
            same = isSame(caught);
        }
        EXPECT_TRUE(same) << step.line;
        EXPECT_EQ(Transcript(), BuildUpLines(index + 1) + UndoingLines(index));
        ExpectLayerDown();
    }
}

TEST_F(StartUpFailure, OfEachStepWithAMessagePassesUnchanged) {
    Message message;
    message.SetDomainAndID(7, -12);
    message.SetMessage(Wide(u"no library \u274D").data());
    ExpectEachStepPassesOn(message, [](const Message& caught) {
        return caught.GetDomain() == 7 && caught.GetID() == -12 &&
               Text(caught.GetMessage()) == u"no library \u274D";
    });
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfEachStepWithTheSupportLayersExceptionPassesUnchanged) {
    Message message;
    message.SetMessage(Wide(u"support").data());
    using Thrown = VelBase::ExceptionImpl<Message>;
    ExpectEachStepPassesOn(Thrown(message), [](const Thrown& caught) {
        return Text(caught.GetMessage()) == u"support";
    });
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfEachStepWithAnExceptionPassesUnchanged) {
    const Exception exception(Wide(u"somebody else's").data(), VelNet::SOCKET_ERR_LOOP);
    ExpectEachStepPassesOn(exception, [](const Exception& caught) {
        return Text(caught.GetMessage()) == u"somebody else's" && caught.GetErrorCode() == 10062;
    });
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfEachStepWithAnIntPassesUnchanged) {
    ExpectEachStepPassesOn(4711, [](int caught) { return caught == 4711; });
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfEachStepHappensUnderTheLock) {
    bool held = true;
    ObserveAll([&](const Event&) { held = held && g_startUpLock == 0x12345678; });
    ExpectEachStepPassesOn(1, [](int caught) { return caught == 1; });
    EXPECT_TRUE(held);
}

TEST_F(StartUpFailure, OfWinsockWithAnotherExceptionIsUndoneToo) {
    On::WSAStartup().Throws(4711);
    EXPECT_THROW(SocketInitialization(), int);
    EXPECT_EQ(Transcript(), FailedStartUpLines());
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfASecondObjectCannotHappen) {
    const SocketInitialization first;
    On::WSAStartup().Returns(10091);
    {
        const SocketInitialization second;  // asks nobody
    }
    EXPECT_EQ(UnusedAnswers(), Lines{"WSAStartup"});
    EXPECT_EQ(Winsock::WSAStartup(0x0202, nullptr), 10091);  // takes the answer away
}

TEST_F(StartUpFailure, OfMemoryForTheStateIsCountedAndStartsNothing) {
    std::optional<SocketInitialization> initialization;
    {
        const FailNth failing(1);
        initialization.emplace();
        EXPECT_TRUE(failing.Happened());
    }
    EXPECT_EQ(g_socketInitializationCount, 1);
    EXPECT_EQ(g_socketLayer, nullptr);
    EXPECT_EQ(g_startUpLock, 0U);
    {
        const SocketInitialization onlyCounts;
        EXPECT_EQ(g_socketInitializationCount, 2);
        EXPECT_EQ(g_socketLayer, nullptr);
    }
    initialization.reset();
    EXPECT_EQ(Transcript(), Lines());
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfMemoryForEachRouterIsUndone) {
    for (std::size_t router = 0; router < 4; ++router) {
        ClearTranscript();
        const Mark mark;
        const FailNth failing(2 + router);  // the first is the state's
        EXPECT_THROW(SocketInitialization(), std::bad_alloc) << router;
        EXPECT_EQ(mark.LiveBlocks(), 0) << router;
        EXPECT_EQ(Transcript(), BuildUpLines(3 + router + 1) + UndoingLines(3 + router));
        ExpectLayerDown();
    }
    {
        const FailNth failing(6);
        const SocketInitialization initialization;
        EXPECT_FALSE(failing.Happened());  // start-up makes no other request
    }
    ClearTranscript();
    ExpectNextObjectStarts();
}

TEST_F(StartUpFailure, OfMemoryForTheFailureTextIsUndone) {
    bool happened = true;
    std::size_t number = 5;
    while (happened) {
        ASSERT_LT(++number, 20U);
        ClearTranscript();
        On::WSAStartup().Returns(10091);
        const Mark mark;
        bool memory = false;
        {
            const FailNth failing(number);
            try {
                const SocketInitialization initialization;
            } catch (const std::bad_alloc&) {
                memory = true;
            } catch (const Exception& caught) {
                EXPECT_EQ(caught.GetErrorCode(), 10091);
            }
            happened = failing.Happened();
        }
        EXPECT_EQ(memory, happened) << number;
        EXPECT_EQ(mark.LiveBlocks(), 0) << number;
        EXPECT_EQ(Transcript(), FailedStartUpLines()) << number;
        ExpectLayerDown();
    }
    EXPECT_GT(number, 6U);
    ExpectNextObjectStarts();
}

}  // namespace
}  // namespace FoundationTests
