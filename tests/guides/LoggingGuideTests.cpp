// The code of docs/logging.md, and what the README shows of the log.
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/Exception.h>
#include <loopback/LoopbackTest.h>

#include <atomic>
#include <cstring>

namespace {

// Counts the failures.
class Counter : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override {
        if (std::strcmp(record.category, "Error") == 0) ++count_;
    }
    int Count() const { return count_; }

private:
    std::atomic<int> count_ = 0;
};

class LoggingGuide : public Loopback::LoopbackTest {};

TEST_F(LoggingGuide, RecordsGoToStandardError) {
    testing::internal::CaptureStderr();
    VelLog::StandardErrorSink sink;  // or VelLog::FileSink, or a class of your own
    VelLog::SetSink(&sink);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_ERROR, true);
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_CONNECTION_TRACE, true);
    Loopback::Connected();
    VelLog::SetSink(nullptr);
    const std::string records = testing::internal::GetCapturedStderr();
    EXPECT_NE(records.find("Network/Connection Trace: Connected"), std::string::npos) << records;
}

TEST_F(LoggingGuide, ASinkOfOnesOwnSeesEachFailure) {
    Counter counter;
    VelLog::SetSink(&counter);
    Loopback::EnableAllRouters();
    const Loopback::Connection connection = Loopback::Connected();
    connection.server->Close();
    EXPECT_EQ(counter.Count(), 0);
    char buffer[1];
    EXPECT_THROW(connection.client->Receive(buffer, 1), VelNet::Exception);
    EXPECT_EQ(counter.Count(), 1);
    VelLog::SetSink(nullptr);
}

}  // namespace
