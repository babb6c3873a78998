// The table of remembered routers, full. A program of its own: what is remembered is never
// forgotten.
#include <VelLog/LogControl.h>
#include <VelLog/Router.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using VelLog::SetRouterEnabled;

VelBase::ReturnPtrI<VelLog::Router> Create(const char* name, const char* category) {
    return VelLog::CreateRouter(name, category, VelSynch::LOCK_STACK_CATEGORY_NETWORK);
}

class IdleSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override {}
};

TEST(RouterLimit, SixtyFourPairsAreRememberedAndStayUsable) {
    IdleSink sink;  // without one no router is enabled
    VelLog::SetSink(&sink);
    const auto surplus = Create("Surplus", "Error");
    for (int pair = 0; pair < 64; ++pair) {
        ASSERT_TRUE(SetRouterEnabled("Network", std::to_string(pair).c_str(), pair % 2 == 0));
    }
    EXPECT_FALSE(SetRouterEnabled("Surplus", "Error", true));
    EXPECT_FALSE(surplus->IsEnabled());
    EXPECT_FALSE(Create("Surplus", "Error")->IsEnabled());
    EXPECT_TRUE(Create("Network", "0")->IsEnabled());
    EXPECT_FALSE(Create("Network", "1")->IsEnabled());
    EXPECT_TRUE(Create("Network", "62")->IsEnabled());
    EXPECT_TRUE(SetRouterEnabled("Network", "63", true));
    EXPECT_TRUE(Create("Network", "63")->IsEnabled());
    VelLog::SetSink(nullptr);
}

}  // namespace
