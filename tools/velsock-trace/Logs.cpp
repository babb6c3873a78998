#include "Logs.h"

#include <cctype>

#include "Printable.h"

namespace VelSockTrace {

namespace {

constexpr std::size_t MostExamples = 3;
constexpr std::size_t MostOfLine = 100;

std::string WithoutNumber(const std::string& path) {
    const std::size_t end = path.find_last_not_of("0123456789");
    const bool isNumbered = end != std::string::npos && end + 1 < path.size() && path[end] == '.';
    return isNumbered ? path.substr(0, end) : path;
}

}  // namespace

Logs::Source::Source(const std::string& pathOfFile, std::size_t index, bool isFollowed)
    : path(pathOfFile),
      log(index),
      file(pathOfFile, isFollowed),
      splitter([this](char* buffer, std::size_t size) { return file.Read(buffer, size); }) {}

Logs::Logs(const std::vector<std::string>& paths, bool isFollowed) : isFollowed_(isFollowed) {
    std::map<std::string, std::size_t> logs;
    for (const std::string& path : paths) {
        const auto log = logs.emplace(WithoutNumber(path), logs.size()).first;
        sources_.emplace_back(path, log->second, isFollowed);
    }
}

Logs::Next Logs::Take() {
    if (taken_ != nullptr) taken_->hasRecord = false;
    taken_ = nullptr;
    for (Source& source : sources_) {
        if (!source.hasRecord && !Fill(source)) continue;
        if (taken_ == nullptr || source.record.time < taken_->record.time) taken_ = &source;
    }
    if (taken_ == nullptr) return {};
    return {&taken_->record, taken_->log};
}

// Whether there is a record.
bool Logs::Fill(Source& source) {
    while (const auto line = TakeLine(source)) {
        ++source.lines;
        if (Keep(source, *line)) return true;
    }
    return false;
}

std::optional<Line> Logs::TakeLine(Source& source) const {
    if (auto line = source.splitter.Next()) return line;
    if (isFollowed_) return {};
    return source.splitter.Rest();
}

bool Logs::Keep(Source& source, const Line& line) {
    if (line.isCut) Note(faults_.cut, source, line.text);
    switch (source.parser.Parse(line.text, source.record)) {
        case LineKind::Foreign:
            Note(faults_.foreign, source, line.text);
            return false;
        case LineKind::Broken:
            Note(faults_.broken, source, line.text);
            return false;
        default:
            if (source.record.isDamaged) Note(faults_.damaged, source, line.text);
            source.hasRecord = true;
            return true;
    }
}

void Logs::Note(Fault& fault, const Source& source, std::string_view line) {
    if (++fault.count > MostExamples) return;
    fault.examples.push_back(
        {Printable(source.path), source.lines, PrintableHead(line, MostOfLine)});
}

std::uint64_t Logs::Consumed() const noexcept {
    std::uint64_t sum = 0;
    for (const Source& source : sources_)
        sum += source.splitter.Consumed();
    return sum;
}

std::uint64_t Logs::Size() const {
    std::uint64_t sum = 0;
    for (const Source& source : sources_)
        sum += source.file.Size();
    return sum;
}

}  // namespace VelSockTrace
