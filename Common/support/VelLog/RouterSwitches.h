// What the routers are told besides the host's switches.
#pragma once

namespace VelLog {

// Whether there is a sink from now on. Called under the lock of the sink, so that the routers hear
// of changes in their order.
void TellRoutersOfSink(bool isSet) noexcept;

}  // namespace VelLog
