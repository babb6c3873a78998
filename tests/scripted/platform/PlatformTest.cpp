#include "Call.h"
#include "scripted/ScriptedPlatform.h"

namespace Scripted {

namespace {

std::vector<void (*)()>& Forgetters() {
    static std::vector<void (*)()> forgetters;
    return forgetters;
}

// GoogleTest makes some of its own parts on first use and keeps them, the room for traces among
// them. Here that happens before memory is counted.
void WarmUpGoogleTest(int traces) {
    SCOPED_TRACE("");
    if (traces > 1) return WarmUpGoogleTest(traces - 1);
    SUCCEED();
}

void ForgetEverything() {
    const Allocations::Uncounted uncounted;
    for (void (*const forget)() : Forgetters())
        forget();
}

}  // namespace

bool AtReset(void (*forget)()) {
    Forgetters().push_back(forget);
    return true;
}

void Reset() {
    ForgetEverything();
    BeginAllocations();
}

void PlatformTest::SetUp() {
    WarmUpGoogleTest(16);
    Reset();
}

void PlatformTest::TearDown() {
    const std::vector<std::string> nothing;
    const bool scriptDone = UnusedAnswers() == nothing;
    const bool allClosed = Ledger() == nothing;
    EXPECT_EQ(CancellationsHeld(), 0) << "the thread cannot be cancelled any more";
    EXPECT_TRUE(scriptDone) << "answers left: " << ::testing::PrintToString(UnusedAnswers());
    EXPECT_TRUE(allClosed) << "still open: " << ::testing::PrintToString(Ledger());
    ForgetEverything();
    // A failure's own message is memory that GoogleTest keeps.
    if (!scriptDone || !allClosed || HasFailure()) return;
    const Live left = LiveMemory();
    EXPECT_EQ(left.blocks, 0) << "memory not freed, in bytes: " << left.bytes;
}

}  // namespace Scripted
