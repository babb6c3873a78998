// The page without its data; made of page.html by the build.
#pragma once

#include <string_view>

namespace VelSockTrace {

extern const std::string_view PageBeforeData;
extern const std::string_view PageAfterData;

}  // namespace VelSockTrace
