// Lets each test fail that leaves a start-up behind.
#include <Platform/Winsock.h>
#include <gtest/gtest.h>

namespace Conformance {

namespace {

constexpr int NotInitialized = 10093;

class LayerLedger : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_NE(Winsock::WSACleanup(), 0) << "a start-up is left behind";
        EXPECT_EQ(Winsock::WSAGetLastError(), NotInitialized);
    }
};

// The listeners own it.
const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new LayerLedger);
    return true;
}();

}  // namespace

}  // namespace Conformance
