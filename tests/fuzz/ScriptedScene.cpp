#include "ScriptedScene.h"

#include <VelNet/SocketInitialization.h>

#include "Fuzzing.h"
#include "scripted/platform/Call.h"

namespace Fuzz {

namespace {

// Whatever the scripted platform complains about ends the process, too.
const bool breaking = testing::FLAGS_gtest_break_on_failure = true;

void PlayWithLayer(const std::function<void()>& scene) {
    const VelNet::SocketInitialization layer;
    Scripted::EnableAllRouters();
    Scripted::ClearTranscript();
    // What a call that succeeds leaves behind: an error number that is read late is wrong.
    Scripted::DisturbLastErrorWith(Disturbance);
    scene();
}

void ExpectNothingLeft() {
    const Scripted::Allocations::Uncounted uncounted;
    Expect("answers left", Scripted::Lines(), Scripted::UnusedAnswers());
    Expect("still open", Scripted::Lines(), Scripted::Ledger());
}

}  // namespace

void PlayScene(const std::function<void()>& scene) {
    Scripted::Reset();
    PlayWithLayer(scene);
    ExpectNothingLeft();
    Scripted::Allocations::Uncounted uncounted;
    Scripted::ForgetAnswers();
}

}  // namespace Fuzz
