// The lines of a fault story, read.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "FaultStory.h"

namespace SocketTests {

struct FaultStep {
    std::string line;  // as the transcript has it; of a record its text
    std::string call;  // of a record "log"
    Answer answer;
    bool isFailure = false;
    bool hasEachNumber = false;          // the failure's number is the one that is tried
    std::vector<std::string> when = {};  // empty: always; a record's category
};

struct FaultScript {
    std::vector<FaultStep> steps;
    std::string outcome = "returns";  // the word
    std::string text;                 // behind it
    std::string told;                 // the failure's text where it is not what is thrown
    Properties holds;
    std::vector<std::string> ledger;  // "+socket 1002", "-socket 1001"
    std::vector<std::string> leaks;
    std::vector<int> numbers;  // one, when no call fails with each

    bool HasEachNumber() const;
};

FaultScript ReadStory(const FaultStory& story);

// Of a call that throws an int.
Answer ThrownAnswer();

// What the system is to answer, from what stands behind the arrow.
Answer ReadAnswer(const std::string& call, const std::string& text);

std::vector<std::string> WordsOf(const std::string& text);
std::string Trimmed(const std::string& text);

}  // namespace SocketTests
