// What must be in the log after one failure.
#pragma once

#include <string>

namespace FoundationTests {

// One record since the test began, under "Error", made from the format and the failure text as its
// only argument, with the bookkeeping that every record has.
void ExpectOneRecord(const std::string& format, const std::u16string& failureText);

}  // namespace FoundationTests
