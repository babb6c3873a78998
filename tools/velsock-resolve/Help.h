// The program's description of itself.
#pragma once

namespace VelSockResolve {

const char* HelpText() noexcept;
const char* VersionText() noexcept;

}  // namespace VelSockResolve
