// A second state of the layer, built while the first is published.

#include <Socket/SocketAPI.h>
#include <VelNet/Exception.h>

#include <optional>

#include "ErrorTableExpectations.h"
#include "FailureRecordExpectations.h"
#include "SocketFixture.h"
#include "StartUpFixture.h"

namespace FoundationTests {
namespace {

using SocketTests::Catch;
using SocketTests::Caught;
using VelNet::Exception;
namespace SocketAPI = VelNet::SocketAPI;

constexpr char StartUpHead[] = "VelNet::SocketAPI::Initialize() - FAIL. The ::WSAStartup failed";

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
    EXPECT_EQ(Catch([&] { SocketAPI::Initialize(*memory); }), (Caught{true, text, 10091}));
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

}  // namespace
}  // namespace FoundationTests
