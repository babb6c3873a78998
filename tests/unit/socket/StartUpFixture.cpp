#include "StartUpFixture.h"

namespace FoundationTests {

void ExpectLayerDown() {
    EXPECT_EQ(g_socketInitializationCount, 0);
    EXPECT_EQ(g_startUpLock, 0U);
    EXPECT_EQ(g_socketLayer, nullptr);
}

void StartUpTest::SetUp() {
    PlatformTest::SetUp();
    ExpectLayerDown();
}

void StartUpTest::TearDown() {
    ExpectLayerDown();
    PlatformTest::TearDown();
}

const std::vector<BuildUpStep> BuildUpSteps = {
    {"VelSynch up", 0, "VelSynch up", "VelSynch down"},
    {"VelRegistry up", 0, "VelRegistry up", "VelRegistry down"},
    {"VelLog up", 0, "VelLog up", "VelLog down"},
    {"CreateRouter", 0, "CreateRouter(Network, Error, -3)", "~Router(Network, Error)"},
    {"CreateRouter", 1, "CreateRouter(Network, Connection Trace, -3)",
     "~Router(Network, Connection Trace)"},
    {"CreateRouter", 2, "CreateRouter(Network, Packet Trace, -3)",
     "~Router(Network, Packet Trace)"},
    {"CreateRouter", 3, "CreateRouter(Network, Verbose Packet Trace, -3)",
     "~Router(Network, Verbose Packet Trace)"},
};

Lines BuildUpLines(std::size_t steps) {
    Lines lines;
    for (std::size_t index = 0; index < steps; ++index)
        lines.push_back(BuildUpSteps[index].line);
    return lines;
}

Lines UndoingLines(std::size_t steps) {
    Lines lines;
    for (std::size_t index = steps; index > 0; --index)
        lines.push_back(BuildUpSteps[index - 1].undoing);
    return lines;
}

Lines StartUpLines() {
    return BuildUpLines() + Lines{"WSAStartup(0x0202)"};
}

Lines ShutDownLines() {
    return Lines{"WSACleanup()"} + UndoingLines();
}

Lines FailedStartUpLines() {
    return StartUpLines() + UndoingLines();
}

Lines operator+(Lines first, const Lines& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::string CategoryOf(const Event& event) {
    const std::string start = "~Router(Network, ";
    return event.text.substr(start.size(), event.text.size() - start.size() - 1);
}

const std::vector<NamedRouterMember> RouterMembers = {
    {"Error", &SocketLayerState::errorRouter},
    {"Connection Trace", &SocketLayerState::connectionTraceRouter},
    {"Packet Trace", &SocketLayerState::packetTraceRouter},
    {"Verbose Packet Trace", &SocketLayerState::verbosePacketTraceRouter},
};

}  // namespace FoundationTests
