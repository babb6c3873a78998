// Stories of what every operation does when a call of the system fails or answers oddly, to be read
// next to the headers: the calls in their order, what each answers, and how it ends.
//
//   {"Bind", R"(
//       bind(1001, 10.0.0.1:80, 16)   fails
//       WSAGetLastError()
//       log Error
//       throws VelNet::SocketImpl::Bind() - FAIL. Cannot bind to a socket: 10.0.0.1: 80, errno =
//       {n}
//   )"}
//
// A line is a call as the transcript has it, and then nothing (it does the usual) or one of:
//
//   -> ANSWER              how each call's answer is written stands in FaultStoryAnswers.cpp
//   fails                  with every number: each of the table of errors, and 16 others
//   fails 10049            with this number
//   fails returning 1      with every number, and this result instead of the usual one
//   throws                 an int
//   when CATEGORY or …     is called only while one of these routers is on
//
// or one of:
//
//   log Error              the failure's text; log CATEGORY: TEXT any other record
//   throws TEXT            VelNet::Exception, with the code of the number, -1 where TEXT has none
//   raises TEXT            VelBase::ExceptionImpl<Message>: TEXT, a line feed, the system's text
//   passes                 the int passes
//   tells TEXT             the text of a failure that is not thrown
//   returns RESULT         in the operation's own words
//   holds NAME=VALUE …     what the objects hold afterwards, where that changes
//   opens ENTRY            of the ledger; closes ENTRY; leaks ENTRY is not given back either
//   numbers except N …     the numbers with which the story is told; numbers only N …
//
// {n} is the number as one unit and its description, {-1} the same of -1, {left} of what a call
// that succeeded left behind; {u} is the number's digits. {none} is the empty text at the end of a
// line.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>

#include "SocketFixture.h"

namespace SocketTests {

struct FaultStory {
    const char* operation;
    const char* text;
};

using Properties = std::map<std::string, std::string>;

// An operation about to run, with all that it needs. What that holds ends with it.
struct Trial {
    std::function<std::string()> act;
    std::function<Properties()> state = [] { return Properties(); };
};

struct FaultTable {
    std::map<std::string, std::function<Trial()>> operations;
    std::span<const FaultStory> stories;
    bool portsAreTexts = false;      // in the records
    std::string withoutMemory = {};  // how an operation may also end without memory
};

// Runs each story with each of its numbers, with all routers on and off; with one number also with
// each combination of routers, with a failing WSACleanup where the layer does not look at that, and
// with another number left behind by each call that succeeds. Compares the calls, the outcome, the
// text and the code, the records, what the objects hold and the ledger.
void ExpectEachStory(const FaultTable& table);

// Every call that can fail in any story fails in one, at each position, with every number; and each
// operation has a story in which nothing fails.
void ExpectEveryCallFails(const FaultTable& table);

// Runs each story again and again: with each call that may be the last of a cancelled thread
// throwing in turn, which passes and is followed by nothing but the clean-up; and with each
// allocation failing in turn, which is told as std::bad_alloc or not at all. Afterwards nothing is
// left open.
void ExpectNothingIsLost(const FaultTable& table);

// The numbers of the table of errors, and 16 that it does not know.
std::vector<int> FaultNumbers();

}  // namespace SocketTests
