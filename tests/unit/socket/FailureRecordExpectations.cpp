#include "FailureRecordExpectations.h"

#include <gtest/gtest.h>

#include "scripted/RecordingServices.h"

namespace FoundationTests {

using namespace Scripted;

void ExpectOneRecord(const std::string& format, const std::u16string& failureText) {
    const std::vector<LoggedMessage> messages = LoggedMessages();
    ASSERT_EQ(messages.size(), 1U);
    const LoggedMessage& message = messages.front();
    EXPECT_EQ(message.router, "Network");
    EXPECT_EQ(message.category, "Error");
    EXPECT_EQ(message.format, format);
    EXPECT_EQ(message.quotedFormat, '"' + format + '"');
    EXPECT_EQ(message.source, nullptr);
    EXPECT_EQ(message.function, nullptr);
    EXPECT_EQ(message.line, 0);
    EXPECT_EQ(message.arguments,
              (std::vector<LoggedArgument>{
                  {VelResource::MessageArgument::Kind::WideText, failureText, "", 0}}));
    EXPECT_EQ(FormatterRequests(), 1);
}

}  // namespace FoundationTests
