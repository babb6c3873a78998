// Standard input, line by line.
#pragma once

#include <optional>
#include <string>

namespace VelSockResolve {

// Lines end with a line feed, a carriage return and a line feed, or a zero byte, and come as soon
// as they are whole. The last one needs no end.
class LineReader {
public:
    // Nothing at the end of the input. Throws Failure with LocalFailure.
    std::optional<std::string> Next();

private:
    std::optional<std::string> TakeWholeLine();
    bool ReadMore();

    std::string text_;
};

}  // namespace VelSockResolve
