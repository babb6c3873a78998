// Part of a test program, it lets each test fail that leaves something behind: a descriptor, a
// thread, a thread key, a blocked signal.
#include <gtest/gtest.h>

#include "support/posix/ProcessState.h"

namespace Support {

namespace {

class TestLedger : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { before_ = ProcessState::Now(); }

    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(before_.DifferenceTo(ProcessState::Now(), false), "") << "is left behind";
    }

    ProcessState before_;
};

// The listeners own it.
const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new TestLedger);
    return true;
}();

}  // namespace

}  // namespace Support
