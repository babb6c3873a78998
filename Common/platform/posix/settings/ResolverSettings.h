// The machine's DNS domain and name servers, as the system's resolver is told them.
#pragma once

#include <string>
#include <vector>

namespace Posix {

struct ResolverSettings {
    std::string domain;                    // empty for none
    std::vector<std::string> ipv4Servers;  // dotted texts, in order
    std::size_t serverCount = 0;           // those of both families
};

// The settings that hold at this moment; a machine without a file of them has none. Returns the
// system's error number, or 0.
unsigned int ReadResolverSettings(ResolverSettings& settings);

}  // namespace Posix
