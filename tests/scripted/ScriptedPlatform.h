// The platform seam for unit tests: it plays a script and records what it is asked.
//
// A test, from beginning to end:
//
//   class Connections : public Scripted::PlatformTest {};
//
//   TEST_F(Connections, RefusedPeerIsTold) {
//       On::Connect().Fails(10061);
//       int errorSeenInside = -1;
//       Observe("connect", [&](const Event&) { errorSeenInside = LastError(); });
//       EXPECT_THROW(ConnectTo("10.0.0.1", 80), VelNet::Exception);
//       EXPECT_EQ(errorSeenInside, 0);
//       EXPECT_EQ(Transcript(), (Lines{"socket(2, 1, 6)", "connect(1001, 10.0.0.1:80, 16)",
//                                      "WSAGetLastError()", "closesocket(1001)"}));
//   }
//
// The test also fails when answers are left unused, when anything is still open or held at its end,
// and when memory from operator new is. All state is the process's and guarded, so code under test
// may run on several threads; a test ends them before it ends. Tests in the namespace below, or
// using it, need no prefix.
#pragma once

#include <gtest/gtest.h>

#include "scripted/AddressBytes.h"
#include "scripted/Allocations.h"
#include "scripted/ErrorNumbers.h"
#include "scripted/RegistryTree.h"
#include "scripted/Script.h"
#include "scripted/Transcript.h"
#include "support/Text.h"

namespace Scripted {

using Support::Text;
using Support::Wide;
using Support::Widen;

// Forgets everything: events, answers, observers, ledger, registry, log files, the calling thread's
// last error; handles start at 1001 again and memory is counted from 0.
void Reset();

// How many times over the calling thread holds requests to cancel it back.
int CancellationsHeld();

// The base of fixtures. A fixture that overrides these calls them: SetUp first, TearDown last.
class PlatformTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

}  // namespace Scripted
