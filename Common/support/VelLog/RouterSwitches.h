// What decides about the routers in addition to the host's switches.
#pragma once

namespace VelLog {

// Informs the routers whether a sink is set from now on. Called under the sink's lock, so that they
// learn of changes in order.
void TellRoutersOfSink(bool isSet) noexcept;

}  // namespace VelLog
