#include "FaultStory.h"

#include <cstdio>
#include <optional>

#include "FaultTelling.h"

namespace SocketTests {

namespace {

constexpr Routers NoRouters = {};

std::string Rendered(const Properties& properties) {
    std::string text = "holds";
    for (const auto& [name, value] : properties)
        text.append(" ").append(name).append("=").append(value);
    return text;
}

std::string Joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines)
        text += line + '\n';
    return text;
}

// The format follows from the first words and the category; so do the arguments' kinds.
void ExpectUsualRecord(const LoggedMessage& message, bool portsAreTexts) {
    using Kind = VelResource::MessageArgument::Kind;
    std::vector<Kind> kinds = {Kind::WideText};
    const Kind port = portsAreTexts ? Kind::NarrowText : Kind::Integer;
    if (message.category != ErrorCategory) kinds = {Kind::NarrowText, port, Kind::NarrowText, port};
    const bool isTransfer =
        message.category == PacketCategory || message.category == VerboseCategory;
    if (isTransfer) kinds.insert(kinds.begin(), Kind::Integer);
    if (message.category == VerboseCategory) kinds.push_back(Kind::NarrowText);
    std::vector<Kind> found;
    for (const LoggedArgument& argument : message.arguments)
        found.push_back(argument.kind);
    EXPECT_EQ(found, kinds);
    EXPECT_EQ(message.router, "Network");
    EXPECT_EQ(message.quotedFormat, '"' + message.format + '"');
    EXPECT_TRUE(message.source == nullptr && message.function == nullptr && message.line == 0);
}

void ExpectUsualRecords(bool portsAreTexts) {
    for (const LoggedMessage& message : LoggedMessages())
        ExpectUsualRecord(message, portsAreTexts);
}

// What is still open, when the trial is over, is what the story says is leaked.
void ExpectNothingElseOpen(const FaultScript& script, const Lines& before) {
    Lines leaks;
    for (const std::string& leak : script.leaks)
        leaks.push_back('+' + leak);
    EXPECT_EQ(Difference(before, Ledger()), leaks);
    ForgetLeaks(script.leaks);
}

std::string Told(const Lines& calls, const std::string& outcome, const Properties& state,
                 const Lines& ledger) {
    return Joined(calls) + outcome + '\n' + Rendered(state) + '\n' + Joined(ledger);
}

// Returns whether all came as it is told.
bool Tell(const FaultTable& table, const Telling& telling, const FaultScript& script,
          const std::function<Trial()>& operation) {
    const Lines nothing = Ledger();
    std::string expected, told;
    {
        const Trial trial = operation();
        const Properties before = trial.state();
        const Lines open = Ledger();
        telling.Prepare();
        ClearTranscript();
        const std::string outcome = OutcomeOf(trial.act);
        const Lines calls = SystemCallsAndRecords();
        told = Told(calls, outcome, trial.state(), Difference(open, Ledger()));
        expected = Told(telling.Calls(), telling.Outcome(), telling.State(before), script.ledger);
        EXPECT_EQ(told, expected);
        EXPECT_EQ(UnusedAnswers(), Lines());
        ExpectUsualRecords(table.portsAreTexts);
        EndTelling();
    }
    ExpectNothingElseOpen(script, nothing);
    return told == expected;
}

std::vector<Circumstances> CircumstancesOf(const FaultTable& table, bool isFirstNumber) {
    std::vector<Circumstances> all = {{}, {.routers = NoRouters}};
    if (!isFirstNumber) return all;
    for (const Routers& routers : AllCombinationsOfRouters())
        all.push_back({.routers = routers});
    all.push_back({.leftBehind = 10035});
    all.push_back({.leftBehind = 0});
    all.push_back({.cleanUpFails = table.portsAreTexts});
    return all;
}

// Returns how often it was told, if all came as it is told.
std::optional<std::size_t> TellWith(int number, const FaultTable& table, const FaultStory& story,
                                    const FaultScript& script) {
    SCOPED_TRACE(std::string(story.operation) + " with " + std::to_string(number));
    const auto all = CircumstancesOf(table, number == script.numbers.front());
    for (const Circumstances& circumstances : all)
        if (!Tell(table, Telling(script, number, circumstances), script,
                  table.operations.at(story.operation)))
            return std::nullopt;
    return all.size();
}

// Returns how often it was told, up to the number where something came otherwise.
std::size_t TellWithEachNumber(const FaultTable& table, const FaultStory& story) {
    const FaultScript script = ReadStory(story);
    std::size_t times = 0;
    for (const int number : script.numbers) {
        const std::optional<std::size_t> more = TellWith(number, table, story, script);
        if (!more) break;
        times += *more;
    }
    return times;
}

}  // namespace

void ExpectEachStory(const FaultTable& table) {
    std::size_t times = 0;
    for (const FaultStory& story : table.stories) {
        ASSERT_EQ(table.operations.count(story.operation), 1U) << story.operation;
        times += TellWithEachNumber(table, story);
    }
    std::printf("%zu cases of told failures\n", times);
}

}  // namespace SocketTests
