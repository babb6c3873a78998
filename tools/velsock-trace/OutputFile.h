// A file that the program makes.
#pragma once

#include <fstream>
#include <string>
#include <string_view>

namespace VelSockTrace {

// All operations throw Failure with LocalFailure.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);

    void Write(std::string_view bytes);

    // To be called at the end: tells whether all has been written.
    void Close();

private:
    void Check() const;

    std::string path_;
    std::ofstream stream_;
};

}  // namespace VelSockTrace
