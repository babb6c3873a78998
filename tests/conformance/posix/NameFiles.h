// Names that the system looks up in a file of the test alone.
#pragma once

#include <functional>
#include <string>

namespace Conformance {

// Runs the scene, with Winsock started, in a process of its own whose computer has that name and
// nothing but the loopback interface. The sources are those of the system's name switch.
void WithNames(const std::string& hosts, const std::function<void()>& scene,
               const std::string& hostName = "here", const std::string& sources = "files");

}  // namespace Conformance
