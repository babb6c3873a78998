#include "names/SystemTable.h"

#include "names/NameCase.h"

#include <algorithm>
#include <cstdlib>

namespace Posix {

namespace {

constexpr std::string_view Blanks = " \t\r\n";

std::string_view TakeWord(std::string_view& text) noexcept {
    text.remove_prefix(std::min(text.find_first_not_of(Blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(Blanks));
    text.remove_prefix(word.size());
    return word;
}

}  // namespace

void FileCloser::operator()(std::FILE* file) const noexcept {
    std::fclose(file);
}

void LineFreer::operator()(char* line) const noexcept {
    std::free(line);
}

SystemTable::SystemTable(const char* path) : file_(std::fopen(path, "rce")) {}

bool SystemTable::Next(std::string_view& line) {
    char* read = line_.release();
    const bool found = file_ != nullptr && ::getline(&read, &room_, file_.get()) > 0;
    line_.reset(read);
    if (!found) return false;
    line = read;
    line = line.substr(0, line.find('#'));
    return true;
}

std::string_view SpellingIn(std::string_view line, std::string_view name) noexcept {
    for (std::string_view word = TakeWord(line); !word.empty(); word = TakeWord(line)) {
        if (SameName(word, name)) return word;
    }
    return {};
}

bool IsInHostsFile(std::string_view name) {
    SystemTable hosts("/etc/hosts");
    std::string_view line;
    while (hosts.Next(line)) {
        if (!SpellingIn(line, name).empty()) return true;
    }
    return false;
}

}  // namespace Posix
