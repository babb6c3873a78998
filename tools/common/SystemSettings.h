// Where this system keeps what the library reads. Each system has its own source.
#pragma once

#include <string>
#include <vector>

namespace VelSockTools {

// Returns the place of the settings tree, for people.
std::string PlaceOfSettings();

// Returns a line for each value in the settings tree, "KEY/VALUE: TEXT"; none if there is no tree,
// or if the system has a registry in its place, which is too large.
std::vector<std::string> ListSettings();

// Returns where the DNS domain and the name servers are read, for people.
std::string PlaceOfNameServers();

}  // namespace VelSockTools
