#include "scripted/RecordingServices.h"

#include <VelBase/InterfaceHolder.h>
#include <VelBase/WideLiteral.h>
#include <VelLog/Initializer.h>
#include <VelLog/LogMessage.h>
#include <VelRegistry/Initializer.h>
#include <VelSynch/Initializer.h>

#include <stdexcept>

namespace {

using namespace Scripted;
using VelBase::operator""_wide;
using RouterOwner = VelBase::InterfaceHolder<VelLog::Router>;

class RecordingServices : public PlatformTest {};

VelBase::ReturnPtrI<VelLog::Router> ErrorRouter() {
    return VelLog::CreateRouter("Network", "Error", VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

TEST_F(RecordingServices, LibrariesGoUpAndDown) {
    {
        const VelSynch::Initializer synchronization;
        const VelRegistry::Initializer registry;
        EXPECT_EQ(Ledger(), (Lines{"VelRegistry", "VelSynch"}));
        On::LogInitializer().Throws(std::runtime_error("no log"));
        EXPECT_THROW(VelLog::Initializer(), std::runtime_error);
    }
    EXPECT_EQ(Transcript(), (Lines{"VelSynch up", "VelRegistry up", "VelLog up", "VelRegistry down",
                                   "VelSynch down"}));
}

TEST_F(RecordingServices, RoutersAreFoundByCategoryWhileTheyLive) {
    EnableRouter("Error");
    {
        const RouterOwner router(ErrorRouter());
        EXPECT_TRUE(router->IsEnabled());
        SetRouterFlag("Error", 0);
        EXPECT_FALSE(router->IsEnabled());
        EnableAllRouters();
        EXPECT_TRUE(router->IsEnabled());
        EXPECT_EQ(LiveRouters("Error"), 1);
    }
    EXPECT_EQ(LiveRouters("Error"), 0);
    EXPECT_EQ(Transcript(), (Lines{"CreateRouter(Network, Error, -3)", "~Router(Network, Error)"}));
}

TEST_F(RecordingServices, RouterThatCannotBeMadeIsNotAlive) {
    On::CreateRouter().Throws(std::bad_alloc());
    EXPECT_THROW(ErrorRouter(), std::bad_alloc);
    EXPECT_EQ(Ledger(), Lines());
}

TEST_F(RecordingServices, EndOfARouterIsObserved) {
    int observed = 0;
    Observe("~Router", [&](const Event&) { observed = LiveRouters("Error"); });
    ErrorRouter();
    EXPECT_EQ(observed, 1);
}

TEST_F(RecordingServices, MessagesAreKeptWhole) {
    const RouterOwner router(ErrorRouter());
    VelResource::MessageFormatter& formatter = VelLog::GetMessageFormatter();
    formatter.AddWideText("wide"_wide).AddNarrowText("narrow").AddInteger(-7);
    VelLog::LogMessage(*router, "%1 %2 %3", formatter, "\"%1 %2 %3\"", nullptr, nullptr, 9);

    ASSERT_EQ(LoggedMessages("Error").size(), 1U);
    const LoggedMessage message = LoggedMessages().front();
    using Kind = VelResource::MessageArgument::Kind;
    EXPECT_EQ(message.format, "%1 %2 %3");
    EXPECT_EQ(message.quotedFormat, "\"%1 %2 %3\"");
    EXPECT_EQ(message.source, nullptr);
    EXPECT_EQ(message.function, nullptr);
    EXPECT_EQ(message.line, 9);
    EXPECT_EQ(message.arguments, (std::vector<LoggedArgument>{{Kind::WideText, u"wide", "", 0},
                                                              {Kind::NarrowText, u"", "narrow", 0},
                                                              {Kind::Integer, u"", "", -7}}));
    EXPECT_EQ(LoggedTexts("Error"), std::vector<std::u16string>{u"wide narrow -7"});
    EXPECT_EQ(Transcript().back(), "LogMessage(Error, \"wide narrow -7\")");
    EXPECT_EQ(FormatterRequests(), 1);
}

TEST_F(RecordingServices, WritingAMessageMayThrow) {
    const RouterOwner router(ErrorRouter());
    On::LogMessage().Throws(std::runtime_error("disk"));
    EXPECT_THROW(VelLog::LogMessage(*router, "text", VelLog::GetMessageFormatter(), "\"text\"",
                                    nullptr, nullptr, 0),
                 std::runtime_error);
}

}  // namespace
