// The program's description of itself.
#pragma once

namespace VelSockCat {

const char* HelpText() noexcept;
const char* VersionText() noexcept;

}  // namespace VelSockCat
