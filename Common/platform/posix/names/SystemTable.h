// Tables of names that the system keeps in text files: hosts, services.
#pragma once

#include <cstdio>
#include <memory>
#include <string_view>

namespace Posix {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept;
};
struct LineFreer {
    void operator()(char* line) const noexcept;
};

// The lines of a table, without comments; none if there is no such file.
class SystemTable {
public:
    explicit SystemTable(const char* path);

    // Reads the next line, valid until the following call. Returns false at the end.
    bool Next(std::string_view& line);

private:
    std::unique_ptr<std::FILE, FileCloser> file_;
    std::unique_ptr<char, LineFreer> line_;
    std::size_t room_ = 0;
};

// Returns the word of the line that equals the name except for case, as the line spells it; empty
// if there is none.
std::string_view SpellingIn(std::string_view line, std::string_view name) noexcept;

// Whether /etc/hosts has the name.
bool IsInHostsFile(std::string_view name);

}  // namespace Posix
