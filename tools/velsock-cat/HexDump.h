// Bytes as people read them: offset, hexadecimal digits, characters.
#pragma once

#include <string>
#include <string_view>

namespace VelSockCat {

// Goes on counting from one transfer to the next. What it returns controls no terminal.
class HexDump {
public:
    // The prefix begins each line.
    explicit HexDump(std::string prefix) : prefix_(std::move(prefix)) {}

    // Returns a line for each 16 bytes. Each transfer begins a line of its own.
    std::string Lines(std::string_view bytes);

private:
    std::string prefix_;
    unsigned long long offset_ = 0;
};

}  // namespace VelSockCat
