#include "FaultTelling.h"

#include <VelBase/ExceptionImpl.h>

#include <algorithm>
#include <set>

#include "ErrorTableExpectations.h"
#include "scripted/platform/Call.h"

namespace SocketTests {

namespace {

using FoundationTests::ExpectedRow;

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

// Lists of addresses are not told by their number.
std::string Unnumbered(const std::string& entry) {
    return entry.substr(0, entry.starts_with("address list ") ? 12 : entry.size());
}

std::string Thrown(int code, const std::u16string& text) {
    return "throws " + std::to_string(code) + ' ' + QuotedUnits(text);
}

std::string Raised(int id, const std::u16string& text) {
    return "raises " + std::to_string(id) + ' ' + QuotedUnits(text);
}

}  // namespace

void Telling::Prepare(std::size_t throwing) const {
    DisturbLastErrorWith(circumstances_.leftBehind);
    SetLastError(circumstances_.leftBehind);
    Switch(circumstances_.routers);
    for (std::size_t index = 0; index < script_.steps.size(); ++index) {
        const FaultStep& step = script_.steps[index];
        if (step.call == "log" || !Happens(step)) continue;
        QueueAnswer(step.call, index == throwing ? ThrownAnswer() : AnswerOf(step));
    }
}

Lines Telling::Calls() const {
    Lines calls;
    for (const FaultStep& step : script_.steps)
        if (Happens(step)) calls.push_back(LineOf(step));
    return calls;
}

std::string Telling::Outcome() const {
    if (script_.outcome == "passes") return "passes";
    if (script_.outcome == "throws") return Thrown(Code(), FailureText());
    if (script_.outcome == "raises") return Raised(number_, RaisedText());
    return Trimmed("returns " + script_.text);
}

Properties Telling::State(Properties before) const {
    for (const auto& [name, value] : script_.holds)
        before[name] = value;
    return before;
}

bool Telling::Happens(const FaultStep& step) const {
    return step.when.empty() ||
           std::any_of(step.when.begin(), step.when.end(), [&](const std::string& category) {
               return IsOn(circumstances_.routers, category);
           });
}

Answer Telling::AnswerOf(const FaultStep& step) const {
    Answer answer = step.answer;
    if (step.hasEachNumber) answer.error = number_;
    if (circumstances_.cleanUpFails && step.call == "WSACleanup")
        answer = {.kind = Answer::Kind::Failure, .error = 10091};
    return answer;
}

std::string Telling::LineOf(const FaultStep& step) const {
    if (step.call != "log") return Ascii(WithDigits(step.line));
    std::u16string text = Expand(step.line);
    Replace(text, u"{failure}", FailureText());
    return LogLine(step.when[0], text);
}

std::u16string Telling::FailureText() const {
    return Expand(script_.told.empty() ? script_.text : script_.told);
}

std::u16string Telling::RaisedText() const {
    return Expand(script_.text + "\nDescription of {u}.");
}

int Telling::Code() const {
    const auto number = NumberIn(script_.text, number_, circumstances_.leftBehind);
    return number ? ExpectedRow(*number).code : -1;
}

std::u16string Telling::WithDigits(const std::string& text) const {
    std::u16string expanded = Widen(text);
    Replace(expanded, u"{u}", Widen(std::to_string(static_cast<unsigned int>(number_))));
    return expanded;
}

// Nothing follows a unit of 0.
std::u16string Telling::Expand(const std::string& text) const {
    std::u16string expanded = WithDigits(text);
    Replace(expanded, u"{none}", u"");
    const auto number = NumberIn(text, number_, circumstances_.leftBehind);
    if (!number) return expanded;
    const std::size_t place = expanded.rfind(u'{');
    expanded.replace(place, std::u16string::npos, NumberText(*number));
    return expanded.substr(0, expanded.find(u'\0'));
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

Lines SystemCallsAndRecords() {
    return TranscriptWithout({"WideFromCodePage", "CodePageFromWide"});
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

void ForgetLeaks(const std::vector<std::string>& leaks) {
    for (const std::string& entry : Ledger())
        if (std::find(leaks.begin(), leaks.end(), Unnumbered(entry)) != leaks.end())
            ForgetInLedger(entry);
}

void EndTelling() {
    ForgetAnswers();
    ForgetLoggedMessages();
    DisturbLastErrorWith(0);
    Switch({});
}

}  // namespace SocketTests
