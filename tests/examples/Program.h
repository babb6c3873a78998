// A program of the examples as a process of its own; posix/ and windows/ hold an implementation for
// each system. Whatever fails throws std::runtime_error, and so does what takes longer than a
// minute.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Examples {

class Program {
public:
    // Starts build/.../example-NAME with no input. Words hold no quotes.
    Program(const std::string& name, const std::vector<std::string>& words);
    // Ends the process, if it still runs.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    // The next line of standard output or standard error, without its ending.
    std::string ReadLine();
    // All lines until the process has ended, each with "\n".
    std::string ReadRest();
    // The exit code. What the process still writes must fit into a pipe.
    int Wait();

private:
    // Appends what comes next; returns false at the end.
    bool ReadMore();
    bool TakeLine(std::string& line);

    std::intptr_t process_;
    std::intptr_t output_;
    std::string unread_;
};

}  // namespace Examples
