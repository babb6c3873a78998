// Socket addresses in the transcript and in what the seam reports.
#pragma once

#include <string>

namespace Scripted {

// As the transcript writes it.
std::string AddressText(const void* address, int length);

// The parts of the text of a sound address, with which getnameinfo answers; empty for another.
std::string AddressHost(const void* address, int length);
std::string AddressPort(const void* address, int length);

// Copies what has room and reports the length; where there is no place for both, nothing happens.
void ReportAddress(const std::string& reported, void* address, int* length);

}  // namespace Scripted
