#include "Answers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace Conformance {

namespace {

const std::thread::id testingThread = std::this_thread::get_id();

// Calls in a row to which Windows gives the same answer.
struct Row {
    long long windows;
    std::vector<long long> told;  // each answer once
};

struct Answers {
    std::vector<Row> rows;
    bool leftOut = false;
};

std::string Joined(const std::vector<std::string>& texts, const char* separator) {
    std::string joined;
    for (const std::string& text : texts)
        joined += (joined.empty() ? "" : separator) + text;
    return joined;
}

std::string WindowsText(const Answers& answers) {
    std::vector<std::string> texts;
    for (const Row& row : answers.rows)
        texts.push_back(std::to_string(row.windows));
    return Joined(texts, ", ");
}

std::string ToldText(const Answers& answers) {
    std::vector<std::string> texts;
    for (const Row& row : answers.rows) {
        std::vector<std::string> told;
        for (const long long answer : row.told)
            told.push_back(std::to_string(answer));
        texts.push_back(Joined(told, " or "));
    }
    if (answers.leftOut) texts.emplace_back("no answer");
    return Joined(texts, ", ");
}

Answers& OfRunningTest() {
    static Answers answers;
    return answers;
}

const char* Outcome(const testing::TestInfo& test) {
    if (test.result()->Failed()) return "failed";
    return test.result()->Skipped() ? "skipped" : "passed";
}

std::string ParameterOf(const testing::TestInfo& test) {
    const char* const parameter = test.value_param();
    if (parameter == nullptr) return "";
    return *parameter != '\0' ? parameter : "nothing";
}

// The folder below this one whose tests run on one system only; empty for the others.
std::string SystemOf(const testing::TestInfo& test) {
    const std::string file = test.file();
    for (const char* system : {"posix", "windows"}) {
        if (file.find(std::string("conformance/") + system + '/') != std::string::npos)
            return system;
    }
    return "";
}

// Writes a line for each test into the file that VELSOCK_ANSWERS names: system, suite, name,
// parameter, outcome, Windows' answers, the answers that came.
class AnswerWriter : public testing::EmptyTestEventListener {
public:
    explicit AnswerWriter(const char* path) : file_(path, std::ios::binary) {}

private:
    void OnTestEnd(const testing::TestInfo& test) override {
        const Answers& answers = OfRunningTest();
        file_ << SystemOf(test) << '\t' << test.test_suite_name() << '\t' << test.name() << '\t'
              << ParameterOf(test) << '\t' << Outcome(test) << '\t' << WindowsText(answers) << '\t'
              << ToldText(answers) << std::endl;
    }

    std::ofstream file_;
};

void PrintNames(const char* heading, const std::vector<std::string>& names) {
    if (names.empty()) return;
    std::printf("%d tests were left out %s:\n", static_cast<int>(names.size()), heading);
    for (const std::string& name : names)
        std::printf("  %s\n", name.c_str());
}

// Begins each test's answers, and tells at the end what was left out. A test of which nothing is
// left must be skipped, or it would count as passed; those of one system alone look at other things
// than answers.
class AnswerKeeper : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { OfRunningTest() = {}; }

    void OnTestEnd(const testing::TestInfo& test) override {
        const Answers& answers = OfRunningTest();
        if (!answers.leftOut) return;
        const bool skipped = test.result()->Skipped();
        (skipped ? whole_ : inPart_)
            .push_back(std::string(test.test_suite_name()) + '.' + test.name());
        if (!skipped && answers.rows.empty() && SystemOf(test).empty())
            ADD_FAILURE() << "nothing of it has an answer here: it has to be skipped";
    }

    void OnTestProgramEnd(const testing::UnitTest&) override {
        PrintNames("in part", inPart_);
        PrintNames("as a whole", whole_);
    }

    std::vector<std::string> inPart_;
    std::vector<std::string> whole_;
};

// Ends of tests are told to the last listener first.
[[maybe_unused]] const bool keeping = [] {
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    if (const char* const path = std::getenv("VELSOCK_ANSWERS"))
        listeners.Append(new AnswerWriter(path));
    listeners.Append(new AnswerKeeper);
    return true;
}();

}  // namespace

void NoteAnswer(long long windows, long long told) {
    if (std::this_thread::get_id() != testingThread) return;
    std::vector<Row>& rows = OfRunningTest().rows;
    if (rows.empty() || rows.back().windows != windows) rows.push_back({windows, {}});
    std::vector<long long>& answers = rows.back().told;
    if (std::find(answers.begin(), answers.end(), told) == answers.end()) answers.push_back(told);
}

void NoteNoAnswer() {
    OfRunningTest().leftOut = true;
}

}  // namespace Conformance
