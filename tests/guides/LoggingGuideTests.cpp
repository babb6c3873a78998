// The code of docs/logging.md, and what the README shows of the log.
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <loopback/LoopbackTest.h>

namespace {

class LoggingGuide : public Loopback::LoopbackTest {};

TEST_F(LoggingGuide, RecordsGoToStandardError) {
    testing::internal::CaptureStderr();
    VelLog::StandardErrorSink sink;  // or VelLog::FileSink, or a class of your own
    VelLog::SetSink(&sink);
    VelLog::SetRouterEnabled("Network", "Error", true);
    VelLog::SetRouterEnabled("Network", "Connection Trace", true);
    Loopback::Connected();
    VelLog::SetSink(nullptr);
    const std::string records = testing::internal::GetCapturedStderr();
    EXPECT_NE(records.find("Network/Connection Trace: Connected"), std::string::npos) << records;
}

}  // namespace
