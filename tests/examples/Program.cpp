#include <examples/Program.h>

#include <stdexcept>

namespace Examples {

bool Program::TakeLine(std::string& line) {
    const std::size_t end = unread_.find('\n');
    if (end == std::string::npos) return false;
    line = unread_.substr(0, end);
    // Where files of text have other line endings, a program that writes such an ending itself has
    // two.
    while (!line.empty() && line.back() == '\r')
        line.pop_back();
    unread_.erase(0, end + 1);
    return true;
}

std::string Program::ReadLine() {
    std::string line;
    while (!TakeLine(line)) {
        if (!ReadMore()) throw std::runtime_error("no further line after: " + unread_);
    }
    return line;
}

std::string Program::ReadRest() {
    while (ReadMore()) {
    }
    std::string lines;
    for (std::string line; TakeLine(line);)
        lines += line + '\n';
    return lines + unread_;
}

}  // namespace Examples
