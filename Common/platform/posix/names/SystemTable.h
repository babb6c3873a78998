// The tables of names that a system keeps in files of lines: of hosts, of services.
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

// The lines of a table, without comments; none where there is no such file.
class SystemTable {
public:
    explicit SystemTable(const char* path);

    // The next line, which holds until the one after it is read. False at the end.
    bool Next(std::string_view& line);

private:
    std::unique_ptr<std::FILE, FileCloser> file_;
    std::unique_ptr<char, LineFreer> line_;
    std::size_t room_ = 0;
};

// The line's word that is the name but for the case, as the line spells it; empty where there is
// none.
std::string_view SpellingIn(std::string_view line, std::string_view name) noexcept;

// Whether the system's table of hosts has the name.
bool IsInHostsFile(std::string_view name);

}  // namespace Posix
