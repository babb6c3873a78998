// Times as lines show them.
#pragma once

#include <string>

namespace VelLogging {

// "2026-11-22T13:01:02.123456Z"
std::string TimeText(long long microsecondsSince1970);

}  // namespace VelLogging
