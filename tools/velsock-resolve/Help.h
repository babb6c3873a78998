// What the program says about itself.
#pragma once

namespace VelSockResolve {

const char* HelpText() noexcept;
const char* VersionText() noexcept;

}  // namespace VelSockResolve
