// Messages for what the operating system refused.
#pragma once

#include "VelBase/Message.h"
#include "VelBase/WideText.h"

namespace VelBase {

// "<what failed>: <the system's text for the error>", with the error as the identifier.
Message DescribeSystemFailure(const WideText& whatFailed, unsigned int error);

}  // namespace VelBase
