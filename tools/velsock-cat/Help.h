// What the program says about itself.
#pragma once

namespace VelSockCat {

const char* HelpText() noexcept;
const char* VersionText() noexcept;

}  // namespace VelSockCat
