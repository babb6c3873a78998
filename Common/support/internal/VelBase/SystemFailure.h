// Composes messages for failures of the operating system.
#pragma once

#include "VelBase/Message.h"
#include "VelBase/WideText.h"

namespace VelBase {

// Returns "<what failed>: <the system's text for the error>", with the error number as the
// identifier.
Message DescribeSystemFailure(const WideText& whatFailed, unsigned int error);

}  // namespace VelBase
