// Standard input, line by line.
#pragma once

#include <optional>
#include <string>

namespace VelSockResolve {

// Lines end with a line feed, a carriage return and a line feed, or a zero byte, and are returned
// as soon as they are complete. The last one needs no terminator.
class LineReader {
public:
    // Returns nothing at the end of the input. Throws Failure with LocalFailure.
    std::optional<std::string> Next();

private:
    std::optional<std::string> TakeWholeLine();
    bool ReadMore();

    std::string text_;
};

}  // namespace VelSockResolve
