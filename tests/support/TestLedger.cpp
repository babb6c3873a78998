// Part of a test program, it lets each test fail that leaves something of the system behind.
#include <gtest/gtest.h>

#include "support/ProcessLedger.h"

namespace Support {

namespace {

class TestLedger : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { NoteProcess(); }

    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(DifferenceOfProcess(), "") << "is left behind";
    }
};

// The listeners own it.
const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new TestLedger);
    return true;
}();

}  // namespace

}  // namespace Support
