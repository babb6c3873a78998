#include "FaultStory.h"

#include <VelBase/ExceptionImpl.h>

#include <algorithm>
#include <set>

#include "ErrorTableExpectations.h"
#include "FaultStoryLines.h"
#include "scripted/platform/Call.h"

namespace SocketTests {

namespace {

using FoundationTests::ExpectedRow;

// What is the same in all of a story's tellings but these.
struct Circumstances {
    Routers routers = {true, true, true, true};
    int leftBehind = 4242;  // by calls that succeed
    bool cleanUpFails = false;
};

constexpr Routers NoRouters = {};

bool IsOn(const Routers& routers, const std::string& category) {
    return category == ErrorCategory        ? routers.error
           : category == ConnectionCategory ? routers.connection
           : category == PacketCategory     ? routers.packet
                                            : routers.verbose;
}

void Replace(std::u16string& text, const std::u16string& placeholder,
             const std::u16string& content) {
    for (std::size_t place; (place = text.find(placeholder)) != std::u16string::npos;)
        text.replace(place, placeholder.size(), content);
}

// The number as it appears in texts.
std::u16string NumberText(int number) {
    const auto unit = static_cast<char16_t>(static_cast<unsigned int>(number) % 0x10000U);
    return unit + (u" " + std::u16string(ExpectedRow(number).text));
}

// The number that stands in the text, in braces.
std::optional<int> NumberIn(const std::string& text, int number, int leftBehind) {
    if (text.find("{n}") != std::string::npos) return number;
    if (text.find("{left}") != std::string::npos) return leftBehind;
    const std::size_t place = text.find_first_of("-0123456789", text.find('{'));
    const bool isNumber = place != std::string::npos && text[place - 1] == '{';
    return isNumber ? std::stoi(text.substr(place)) : std::optional<int>();
}

std::string Ascii(const std::u16string& text) {
    std::string ascii;
    for (const char16_t unit : text)
        ascii += unit < 0x7F ? static_cast<char>(unit) : '?';
    return ascii;
}

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

// Lists of addresses are not told by their number.
std::string Unnumbered(const std::string& entry) {
    return entry.substr(0, entry.starts_with("address list ") ? 12 : entry.size());
}

// What is in the one and not in the other.
Lines Difference(const Lines& from, const Lines& to) {
    std::multiset<std::string> added(to.begin(), to.end());
    Lines lines;
    for (const std::string& entry : from) {
        const auto found = added.find(entry);
        if (found == added.end())
            lines.push_back('-' + Unnumbered(entry));
        else
            added.erase(found);
    }
    for (const std::string& entry : added)
        lines.push_back('+' + Unnumbered(entry));
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string Thrown(int code, const std::u16string& text) {
    return "throws " + std::to_string(code) + ' ' + QuotedUnits(text);
}

std::string Raised(int id, const std::u16string& text) {
    return "raises " + std::to_string(id) + ' ' + QuotedUnits(text);
}

std::string OutcomeOf(const std::function<std::string()>& act) {
    try {
        return Trimmed("returns " + act());
    } catch (const Exception& exception) {
        ExpectEmptyBase(exception);
        return Thrown(exception.GetErrorCode(), Text(exception.GetMessage()));
    } catch (const VelBase::ExceptionImpl<VelBase::Message>& exception) {
        EXPECT_EQ(exception.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
        return Raised(exception.GetID(), Text(exception.GetMessage()));
    } catch (const int) {
        return "passes";
    }
}

// One telling of a story.
class Telling {
public:
    Telling(const FaultScript& script, int number, const Circumstances& circumstances)
        : script_(script), number_(number), circumstances_(circumstances) {}

    void Prepare() const {
        DisturbLastErrorWith(circumstances_.leftBehind);
        SetLastError(circumstances_.leftBehind);
        Switch(circumstances_.routers);
        for (const FaultStep& step : script_.steps)
            if (Happens(step) && step.call != "log") QueueAnswer(step.call, AnswerOf(step));
    }

    Lines Calls() const {
        Lines calls;
        for (const FaultStep& step : script_.steps)
            if (Happens(step)) calls.push_back(LineOf(step));
        return calls;
    }

    std::string Outcome() const {
        if (script_.outcome == "passes") return "passes";
        if (script_.outcome == "throws") return Thrown(Code(), FailureText());
        if (script_.outcome == "raises") return Raised(number_, RaisedText());
        return Trimmed("returns " + script_.text);
    }

    Properties State(Properties before) const {
        for (const auto& [name, value] : script_.holds)
            before[name] = value;
        return before;
    }

private:
    bool Happens(const FaultStep& step) const {
        return step.when.empty() ||
               std::any_of(step.when.begin(), step.when.end(), [&](const std::string& category) {
                   return IsOn(circumstances_.routers, category);
               });
    }

    Answer AnswerOf(const FaultStep& step) const {
        Answer answer = step.answer;
        if (step.hasEachNumber) answer.error = number_;
        if (circumstances_.cleanUpFails && step.call == "WSACleanup")
            answer = {.kind = Answer::Kind::Failure, .error = 10091};
        return answer;
    }

    std::string LineOf(const FaultStep& step) const {
        if (step.call != "log") return Ascii(WithDigits(step.line));
        std::u16string text = Expand(step.line);
        Replace(text, u"{failure}", FailureText());
        return LogLine(step.when[0], text);
    }

    std::u16string FailureText() const {
        return Expand(script_.told.empty() ? script_.text : script_.told);
    }
    std::u16string RaisedText() const { return Expand(script_.text + "\nDescription of {u}."); }
    int Code() const {
        const auto number = NumberIn(script_.text, number_, circumstances_.leftBehind);
        return number ? ExpectedRow(*number).code : -1;
    }

    std::u16string WithDigits(const std::string& text) const {
        std::u16string expanded = Widen(text);
        Replace(expanded, u"{u}", Widen(std::to_string(static_cast<unsigned int>(number_))));
        return expanded;
    }

    // Nothing follows a unit of 0.
    std::u16string Expand(const std::string& text) const {
        std::u16string expanded = WithDigits(text);
        Replace(expanded, u"{none}", u"");
        const auto number = NumberIn(text, number_, circumstances_.leftBehind);
        if (!number) return expanded;
        const std::size_t place = expanded.rfind(u'{');
        expanded.replace(place, std::u16string::npos, NumberText(*number));
        return expanded.substr(0, expanded.find(u'\0'));
    }

    const FaultScript& script_;
    const int number_;
    const Circumstances& circumstances_;
};

Lines SystemCallsAndRecords() {
    return TranscriptWithout({"WideFromCodePage", "CodePageFromWide"});
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
    ForgetLoggedMessages();
}

void ForgetOne(const std::string& leak) {
    for (const std::string& entry : Ledger())
        if (Unnumbered(entry) == leak) return ForgetInLedger(entry);
}

// What is still open, when the trial is over, is what the story says is leaked.
void ExpectNothingElseOpen(const FaultScript& script, const Lines& before) {
    Lines leaks;
    for (const std::string& leak : script.leaks)
        leaks.push_back('+' + leak);
    EXPECT_EQ(Difference(before, Ledger()), leaks);
    for (const std::string& leak : script.leaks)
        ForgetOne(leak);
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
        ForgetAnswers();
        ExpectUsualRecords(table.portsAreTexts);
        DisturbLastErrorWith(0);
        Switch(NoRouters);
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

bool TellWith(int number, const FaultTable& table, const FaultStory& story,
              const FaultScript& script) {
    SCOPED_TRACE(std::string(story.operation) + " with " + std::to_string(number));
    for (const Circumstances& circumstances :
         CircumstancesOf(table, number == script.numbers.front()))
        if (!Tell(table, Telling(script, number, circumstances), script,
                  table.operations.at(story.operation)))
            return false;
    return true;
}

}  // namespace

void ExpectEachStory(const FaultTable& table) {
    for (const FaultStory& story : table.stories) {
        ASSERT_EQ(table.operations.count(story.operation), 1U) << story.operation;
        const FaultScript script = ReadStory(story);
        for (const int number : script.numbers)
            if (!TellWith(number, table, story, script)) break;
    }
}

}  // namespace SocketTests
