// The stand-ins reach everything that they are to reach, and are gone when their scope has ended.
#include "ModuleTest.h"
#include "support/windows/StandIns.h"

namespace ModuleTests {
namespace {

constexpr char Sockets[] = "ws2_32.dll";

TEST(Imports, OfTheSystemsSocketsAllHaveAStandIn) {
    const Module::PatchedImports patched(Module::SocketStandIns());
    EXPECT_EQ(Module::ImportsFromSystem(Sockets), Lines());
}

TEST(Imports, AreTheSystemsAgainAfterwards) {
    const Lines before = Module::ImportsFromSystem(Sockets);
    { const Module::PatchedImports patched(Module::SocketStandIns()); }
    EXPECT_EQ(before.size(), Module::SocketStandIns().size());
    EXPECT_EQ(Module::ImportsFromSystem(Sockets), before);
}

}  // namespace
}  // namespace ModuleTests
