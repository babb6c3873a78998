// Part of a test program, it lets each test fail that leaves something of the module behind: a
// start-up of the socket layer, a sink of the log.
#include <VelLog/LogControl.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <gtest/gtest.h>

namespace Support {

namespace {

bool IsLayerUp() {
    try {
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
        return true;
    } catch (const VelNet::Exception&) {
        return false;
    }
}

class ModuleLedger : public testing::EmptyTestEventListener {
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_FALSE(IsLayerUp()) << "a start-up is left behind";
        EXPECT_EQ(VelLog::SetSink(nullptr), nullptr) << "a sink is left behind";
    }
};

// The listeners own it.
const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new ModuleLedger);
    return true;
}();

}  // namespace

}  // namespace Support
