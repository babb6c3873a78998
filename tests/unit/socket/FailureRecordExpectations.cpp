#include "FailureRecordExpectations.h"

#include "SocketFixture.h"

namespace FoundationTests {

using namespace SocketTests;

void ExpectOneRecord(const std::string& format, const std::u16string& failureText) {
    ExpectRecords({{ErrorCategory, format, {WideArgument(failureText)}}});
    EXPECT_EQ(FormatterRequests(), 1);
}

}  // namespace FoundationTests
