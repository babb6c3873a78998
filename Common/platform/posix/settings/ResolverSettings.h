// The host's DNS domain and name servers, from the settings of the system's resolver.
#pragma once

#include <string>
#include <vector>

namespace Posix {

struct ResolverSettings {
    std::string domain;                    // empty if there is none
    std::vector<std::string> ipv4Servers;  // dotted strings, in order
    std::size_t serverCount = 0;           // those of both families
};

// Reads the current settings into empty ones; a host without the file has none. Returns the
// system's error number, or 0.
unsigned int ReadResolverSettings(ResolverSettings& settings);

}  // namespace Posix
