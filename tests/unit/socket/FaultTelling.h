// One telling of a fault story: what is scripted for it, and what is expected.
#pragma once

#include <cstddef>
#include <limits>

#include "FaultStoryLines.h"

namespace SocketTests {

inline constexpr std::size_t NoStep = std::numeric_limits<std::size_t>::max();

// What is the same in all of a story's tellings but these.
struct Circumstances {
    Routers routers = {true, true, true, true};
    int leftBehind = 4242;  // by calls that succeed
    bool cleanUpFails = false;
};

class Telling {
public:
    // Keeps references.
    Telling(const FaultScript& script, int number, const Circumstances& circumstances)
        : script_(script), number_(number), circumstances_(circumstances) {}

    // Switches the routers and scripts the calls. The step of that index throws an int instead.
    void Prepare(std::size_t throwing = NoStep) const;

    Lines Calls() const;
    std::string Outcome() const;
    Properties State(Properties before) const;

    bool Happens(const FaultStep& step) const;

private:
    Answer AnswerOf(const FaultStep& step) const;
    std::string LineOf(const FaultStep& step) const;
    std::u16string FailureText() const;
    std::u16string RaisedText() const;
    int Code() const;
    std::u16string WithDigits(const std::string& text) const;
    std::u16string Expand(const std::string& text) const;

    const FaultScript& script_;
    const int number_;
    const Circumstances& circumstances_;
};

// What became of the operation, in the words of Telling::Outcome.
std::string OutcomeOf(const std::function<std::string()>& act);

// The calls so far but for the conversions of texts, and the records.
Lines SystemCallsAndRecords();

// What was "+added" and "-taken" from one ledger to the other. Lists of addresses have no number
// here.
Lines Difference(const Lines& from, const Lines& to);

// Takes those entries out of the ledger.
void ForgetLeaks(const std::vector<std::string>& leaks);

// Ends what Prepare has begun.
void EndTelling();

}  // namespace SocketTests
