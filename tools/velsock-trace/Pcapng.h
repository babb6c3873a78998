// A capture in the pcapng format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "OutputFile.h"

namespace VelSockTrace {

// Of packets that begin with their IP header, with times in microseconds. Throws Failure with
// LocalFailure.
class Pcapng {
public:
    explicit Pcapng(const std::string& path);

    // The comment may be empty.
    void Write(std::int64_t time, std::string_view packet, const std::string& comment);
    void Close() { file_.Close(); }

private:
    void WriteBlock(std::uint32_t type, std::string_view body);

    OutputFile file_;
};

}  // namespace VelSockTrace
