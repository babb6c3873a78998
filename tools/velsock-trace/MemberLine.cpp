// Lines of named members: logfmt and JSON.
#include <cstddef>

#include "Escapes.h"
#include "LineHead.h"

namespace VelSockTrace {

namespace {

// Which members have been seen.
struct Members {
    TimeReader& times;
    LineHead& head;
    bool hasTime = false;
    bool hasText = false;

    bool Take(std::string_view key, std::string_view value) noexcept {
        if (key == "time") return TakeTime(value);
        if (key == "pid") return TakeNumber(value, head.process) && value.empty();
        if (key == "connection") return TakeNumber(value, head.mark) && value.empty();
        if (key == "router") head.router = value;
        if (key == "category") head.category = value;
        if (key == "text") {
            head.text = value;
            hasText = true;
        }
        return true;
    }

    bool TakeTime(std::string_view value) noexcept {
        const auto time = times.Read(value);
        hasTime = time.has_value();
        head.time = time.value_or(0);
        return hasTime;
    }

    bool AreThere() const noexcept { return hasTime && hasText; }
};

void SkipBlanks(std::string_view& text) noexcept {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t'))
        text.remove_prefix(1);
}

// Up to one of the characters, which stays.
std::string_view TakeUntil(std::string_view& text, std::string_view ends) noexcept {
    const std::string_view word = text.substr(0, text.find_first_of(ends));
    text.remove_prefix(word.size());
    return word;
}

bool TakeAfterBlanks(std::string_view& text, char character) noexcept {
    SkipBlanks(text);
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

// Earlier values point into the scratch string, so that it must not move. What escapes stand for
// is at most half as long again: U+FFFD for "\\u" without digits.
void PrepareScratch(std::string& scratch, std::string_view line) {
    scratch.clear();
    if (line.find('\\') != std::string_view::npos) scratch.reserve(2 * line.size());
}

}  // namespace

bool ReadLogfmtLine(std::string_view line, TimeReader& times, std::string& scratch,
                    LineHead& head) {
    PrepareScratch(scratch, line);
    Members members{times, head};
    for (SkipBlanks(line); !line.empty(); SkipBlanks(line)) {
        const std::string_view key = TakeUntil(line, "= ");
        if (!line.starts_with('=')) continue;
        line.remove_prefix(1);
        const std::string_view value =
            line.starts_with('"') ? TakeQuoted(line, scratch) : TakeUntil(line, " ");
        if (!members.Take(key, value)) return false;
    }
    return members.AreThere();
}

bool ReadJsonLine(std::string_view line, TimeReader& times, std::string& scratch, LineHead& head) {
    PrepareScratch(scratch, line);
    Members members{times, head};
    if (!TakeAfterBlanks(line, '{')) return false;
    do {
        SkipBlanks(line);
        if (!line.starts_with('"')) return false;
        const std::string_view key = TakeQuoted(line, scratch);
        if (!TakeAfterBlanks(line, ':')) return false;
        SkipBlanks(line);
        const std::string_view value =
            line.starts_with('"') ? TakeQuoted(line, scratch) : TakeUntil(line, ",} ");
        if (!members.Take(key, value)) return false;
    } while (TakeAfterBlanks(line, ','));
    return members.AreThere() && (line.empty() || TakeAfterBlanks(line, '}'));
}

}  // namespace VelSockTrace
