// The program's description of itself.
#pragma once

namespace VelSockTrace {

const char* HelpText() noexcept;
const char* VersionText() noexcept;

}  // namespace VelSockTrace
