// Start-up and shut-down that fail.

#include <Platform/Winsock.h>
#include <Socket/SocketAPI.h>
#include <VelBase/ExceptionImpl.h>
#include <VelNet/Exception.h>

#include <memory>
#include <optional>
#include <stdexcept>

#include "ErrorTableExpectations.h"
#include "FailureRecordExpectations.h"
#include "StartUpFixture.h"

namespace FoundationTests {
namespace {

using Allocations::FailNth;
using Allocations::Mark;
using VelBase::Message;
using VelNet::Exception;
namespace SocketAPI = VelNet::SocketAPI;

constexpr char StartUpHead[] = "VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed";
constexpr char ShutDownHead[] = "VelNet::SocketAPI::Finalize() - FAIL. The ::WSACleanup failed";

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

struct Failure {
    std::u16string text;
    int code = 0;

    bool operator==(const Failure&) const = default;
};

// What the operation throws, which must be an Exception.
template <class Operation>
Failure FailureOf(Operation operation) {
    try {
        operation();
    } catch (const Exception& caught) {
        return {Text(caught.GetMessage()), caught.GetErrorCode()};
    }
    ADD_FAILURE() << "nothing thrown";
    return {};
}

Failure StartUpFailureOf() {
    return FailureOf([] { const SocketInitialization initialization; });
}

TEST_F(StartUpFailure, OfWinsockIsThrownWithTextAndCode) {
    On::WSAStartup().Returns(10091);
    EXPECT_EQ(StartUpFailureOf(),
              (Failure{u"VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = "
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
        EXPECT_EQ(StartUpFailureOf(),
                  (Failure{ExpectedFailureText(StartUpHead, number), ExpectedRow(number).code}))
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
    On::WSAStartup().Returns(10092);
    EXPECT_EQ(StartUpFailureOf(), (Failure{ExpectedFailureText(StartUpHead, 10092), -1}));
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
                  (Failure{u"VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, "
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
    EXPECT_EQ(StartUpFailureOf(), (Failure{ExpectedFailureText(StartUpHead, 10091), 10091}));
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

// A second state is built while the first is published.
class SecondState : public StartUpTest {
protected:
    void SetUp() override {
        StartUpTest::SetUp();
        first_.emplace();
        ClearTranscript();
    }
    void TearDown() override {
        first_.reset();
        StartUpTest::TearDown();
    }
    // The routers that are published, and those that will be made.
    static void EnableErrorRouters(bool published, bool later) {
        SetRouterFlag("Error", later);
        g_socketLayer->errorRouter->SetFlag(published);
    }

private:
    std::optional<SocketInitialization> first_;
};

TEST_F(SecondState, FailureIsLoggedByThePublishedErrorRouter) {
    EnableErrorRouters(true, false);
    On::WSAStartup().Returns(10091);
    const StateMemory memory;
    const std::u16string text = ExpectedFailureText(StartUpHead, 10091);
    EXPECT_EQ(FailureOf([&] { SocketAPI::Initialize(*memory); }), (Failure{text, 10091}));
    ExpectOneRecord("Cannot initialize socket layer: %1", text);
    EXPECT_EQ(LoggedTexts("Error"), std::vector{u"Cannot initialize socket layer: " + text});
}

TEST_F(SecondState, FailureIsLoggedBeforeAnythingIsUndone) {
    EnableErrorRouters(true, true);
    On::WSAStartup().Returns(0, 0x0101, 0x0101);
    const StateMemory memory;
    EXPECT_THROW(SocketAPI::Initialize(*memory), Exception);
    ForgetInLedger("start-up");
    EXPECT_EQ(Transcript(),
              StartUpLines() +
                  Lines{"LogMessage(Error, \"Cannot initialize socket layer: "
                        "VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed, errno = "
                        "\")"} +
                  UndoingLines());
}

TEST_F(SecondState, FailureIsNotLoggedByTheRouterThatIsUnderConstruction) {
    EnableErrorRouters(false, true);
    On::WSAStartup().Returns(10091);
    const StateMemory memory;
    EXPECT_THROW(SocketAPI::Initialize(*memory), Exception);
    EXPECT_EQ(Transcript(), FailedStartUpLines());
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(SecondState, WhatTheLogThrowsLeavesAndEverythingIsUndone) {
    EnableErrorRouters(true, true);
    On::WSAStartup().Returns(10091);
    On::LogMessage().Throws(4711);
    const StateMemory memory;
    EXPECT_THROW(SocketAPI::Initialize(*memory), int);
    EXPECT_EQ(TranscriptWithout({"LogMessage"}), FailedStartUpLines());
    EXPECT_EQ(CountOf("LogMessage"), 1);
}

TEST_F(SecondState, IsNeitherPublishedNorCounted) {
    const SocketLayerState* const published = g_socketLayer;
    const StateMemory memory;
    SocketAPI::Initialize(*memory);
    EXPECT_EQ(g_socketLayer, published);
    EXPECT_EQ(g_socketInitializationCount, 1);
    SocketAPI::Finalize(*memory);
    EXPECT_EQ(g_socketLayer, published);
    EXPECT_EQ(Transcript(), StartUpLines() + ShutDownLines());
}

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
    EXPECT_GT(number, 2U);
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
