#include "CommandLine.h"

#include <utility>

#include "Failure.h"

namespace VelSockTools {

namespace {

bool LooksLikeOption(const std::string& word) {
    return word.size() >= 2 && word.front() == '-';
}

}  // namespace

void RefuseUsage(const char* program, const std::string& text) {
    throw Failure(ExitCode::WrongUsage, text + "; see " + program + " --help");
}

std::optional<CommandLine::Item> CommandLine::Next() {
    if (value_) RefuseUsage(program_, "'" + option_ + "' takes no value");
    if (!letters_.empty()) return LetterOf(std::exchange(letters_, {}));
    if (next_ == words_.size()) return {};
    const std::string& word = words_[next_++];
    if (optionsEnded_ || !LooksLikeOption(word)) return Item{false, word};
    if (word != "--") return OptionOf(word);
    optionsEnded_ = true;
    return Next();
}

std::string CommandLine::Value() {
    if (value_) return *std::exchange(value_, {});
    if (!letters_.empty()) return std::exchange(letters_, {});
    if (next_ == words_.size()) RefuseUsage(program_, "'" + option_ + "' needs a value");
    return words_[next_++];
}

CommandLine::Item CommandLine::OptionOf(const std::string& word) {
    if (word[1] != '-') return LetterOf(std::string_view(word).substr(1));
    const std::size_t end = word.find('=');
    option_ = word.substr(0, end);
    if (end != std::string::npos) value_ = word.substr(end + 1);
    return {true, option_};
}

CommandLine::Item CommandLine::LetterOf(std::string_view letters) {
    option_ = std::string("-") + letters.front();
    letters_ = letters.substr(1);
    return {true, option_};
}

}  // namespace VelSockTools
