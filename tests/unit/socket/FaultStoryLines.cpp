#include "FaultStoryLines.h"

#include <algorithm>
#include <sstream>

namespace SocketTests {

namespace {

constexpr int ThrownInside = 7;

// The tail behind a word and a blank, where the text begins with the word.
std::optional<std::string> Behind(const std::string& word, const std::string& text) {
    if (text == word) return "";
    if (!text.starts_with(word + ' ')) return {};
    return Trimmed(text.substr(word.size()));
}

std::vector<std::string> PartsOf(const std::string& text, const std::string& separator) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find(separator, start)) != std::string::npos;
         start = end + separator.size())
        parts.push_back(text.substr(start, end - start));
    parts.push_back(text.substr(start));
    return parts;
}

void ReadWhen(FaultStep& step, std::string& tail) {
    const std::size_t place = tail.find("when ");
    if (place == std::string::npos) return;
    step.when = PartsOf(tail.substr(place + 5), " or ");
    tail = Trimmed(tail.substr(0, place));
}

// Where the call reports the number by its result as well, the result is another number.
long long UsualFailure(const std::string& call) {
    return call == "getaddrinfo" || call == "getnameinfo" ? 8 : 0;
}

void ReadFailure(FaultStep& step, const std::string& tail) {
    step.isFailure = true;
    step.answer.kind = Answer::Kind::Failure;
    step.answer.result = UsualFailure(step.call);
    const std::vector<std::string> words = WordsOf(tail);
    step.hasEachNumber = words.empty() || words[0] == "returning";
    if (!step.hasEachNumber) step.answer.error = std::stoi(words[0]);
    if (words.size() >= 2) step.answer.result = std::stoi(words.back());
}

void ReadTail(FaultStep& step, std::string tail) {
    ReadWhen(step, tail);
    if (tail.empty()) return;
    if (const auto answer = Behind("->", tail)) {
        step.answer = ReadAnswer(step.call, *answer);
    } else if (const auto failure = Behind("fails", tail)) {
        ReadFailure(step, *failure);
    } else if (tail == "throws") {
        step.isFailure = true;
        step.answer = ThrownAnswer();
    } else {
        ADD_FAILURE() << "not understood: " << tail;
    }
}

FaultStep StepOf(const std::string& line) {
    FaultStep step;
    const std::size_t end = line.find(')');
    const std::size_t length = end == std::string::npos ? line.find(" throws") : end + 1;
    step.line = Trimmed(line.substr(0, length));
    step.call = step.line.substr(0, step.line.find('('));
    ReadTail(step, Trimmed(line.substr(step.line.size())));
    return step;
}

FaultStep RecordOf(const std::string& text) {
    const std::size_t end = text.find(": ");
    FaultStep step{.line = end == std::string::npos ? "{failure}" : text.substr(end + 2),
                   .call = "log",
                   .answer = {}};
    step.when = {text.substr(0, end)};
    return step;
}

void ReadHolds(FaultScript& script, const std::string& text) {
    for (const std::string& word : WordsOf(text))
        script.holds[word.substr(0, word.find('='))] = word.substr(word.find('=') + 1);
}

void ReadNumbers(FaultScript& script, const std::string& text) {
    std::vector<std::string> words = WordsOf(text);
    const bool only = words.at(0) == "only";
    const auto isNamed = [&](int number) {
        return std::find(words.begin() + 1, words.end(), std::to_string(number)) != words.end();
    };
    std::erase_if(script.numbers, [&](int number) { return isNamed(number) != only; });
}

bool ReadLedger(FaultScript& script, const std::string& line) {
    if (const auto opened = Behind("opens", line)) script.ledger.push_back('+' + *opened);
    if (const auto closed = Behind("closes", line)) script.ledger.push_back('-' + *closed);
    if (const auto leak = Behind("leaks", line)) {
        script.ledger.push_back('+' + *leak);
        script.leaks.push_back(*leak);
    }
    return line.starts_with("opens ") || line.starts_with("closes ") || line.starts_with("leaks ");
}

bool ReadOutcome(FaultScript& script, const std::string& line) {
    if (const auto told = Behind("tells", line)) {
        script.told = *told;
        return true;
    }
    for (const char* const word : {"throws", "raises", "passes", "returns"}) {
        const auto text = Behind(word, line);
        if (!text) continue;
        script.outcome = word;
        script.text = *text;
        return true;
    }
    return false;
}

void ReadLine(FaultScript& script, const std::string& line) {
    if (ReadOutcome(script, line) || ReadLedger(script, line)) return;
    if (const auto record = Behind("log", line))
        script.steps.push_back(RecordOf(*record));
    else if (const auto holds = Behind("holds", line))
        ReadHolds(script, *holds);
    else if (const auto numbers = Behind("numbers", line))
        ReadNumbers(script, *numbers);
    else
        script.steps.push_back(StepOf(line));
}

}  // namespace

Answer ThrownAnswer() {
    return {.kind = Answer::Kind::Exception, .exception = std::make_exception_ptr(ThrownInside)};
}

std::string Trimmed(const std::string& text) {
    const std::size_t start = text.find_first_not_of(" \n");
    if (start == std::string::npos) return "";
    return text.substr(start, text.find_last_not_of(" \n") + 1 - start);
}

std::vector<std::string> WordsOf(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

bool FaultScript::HasEachNumber() const {
    return std::any_of(steps.begin(), steps.end(),
                       [](const FaultStep& step) { return step.hasEachNumber; });
}

FaultScript ReadStory(const FaultStory& story) {
    FaultScript script;
    script.numbers = FaultNumbers();
    for (const std::string& line : PartsOf(story.text, "\n"))
        if (!Trimmed(line).empty()) ReadLine(script, Trimmed(line));
    std::sort(script.ledger.begin(), script.ledger.end());
    if (!script.HasEachNumber()) script.numbers.resize(1);
    return script;
}

}  // namespace SocketTests
