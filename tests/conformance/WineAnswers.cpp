#include "WineAnswers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <mutex>
#include <set>
#include <string>

#include "Answers.h"

namespace Conformance {

namespace {

constexpr std::string_view LastErrorAfterSuccess = "last error after success";

// One row for each answer. A result of -1 is a failure with the error after it.
constexpr WineAnswer Answers[] = {
    {LastErrorAfterSuccess, 0, 0},
    {"a host by an address without family", 0, 0},
    {"a host by null", -1, -1073741819},
    {"a host by too short an address", -1, 10047},
    {"a host by too short an address", -1, 11001},
    {"a timeout of negative length", 0, 0},
    {"an accept whose socket is closed", -1, 995},
    {"an address of the other family", -1, -9},
    {"an IPv4 address for an IPv6 socket", -1, 10022},
    {"a datagram from before connecting", 5, 0},
    {"a connect whose socket is closed", -1, 995},
    {"a datagram to a peer that was taken away", 9, 0},
    {"a datagram to a peer without a port", 1, 0},
    {"a datagram to a peer without an address", 1, 0},
    {"a datagram to an address of another family", -1, 10014},
    {"a datagram to an address of another family", -1, 10045},
    {"a datagram to an address of negative length", 1, 0},
    {"a datagram to an IPv4 address from an IPv6 socket", -1, 10051},
    {"a datagram to no address", -1, 10022},
    {"a datagram to no address", 1, 0},
    {"a datagram to port 0", -1, 10022},
    {"a membership request of another family", 0, 0},
    {"a negative time of select", 1, 0},
    {"a part of a membership request", -1, 10022},
    {"a part of a membership request", -1, 10055},
    {"a peer without a port", 0, 0},
    {"a peer without an address", 0, 0},
    {"a receive whose socket is closed", -1, 10022},
    {"a select for exceptions whose socket is closed", -1, 10038},
    {"a select whose socket is closed", 0, 0},
    {"a service in another case", -1, 10109},
    {"a stream that broadcasts", 0, 0},
    {"binding to a group", 0, 0},
    {"binding to a group of IPv6", -1, 10022},
    {"binding to a group of IPv6", 0, 0},
    {"binding to an address of another family", -1, 10045},
    {"binding to everybody", 0, 0},
    {"binding with a negative length", -1, 10055},
    {"connecting after a refusal", -1, 10053},
    {"connecting to an address of another family", -1, 10045},
    {"connecting to an address of no link", -1, 10022},
    {"connecting to no address", 0, 0},
    {"connecting to no address of IPv6", -1, 10061},
    {"connecting to port 0", -1, 10061},
    {"connecting with a short address", -1, 10049},
    {"joining a group on an interface elsewhere", -1, 10022},
    {"joining a group twice", -1, 10048},
    {"listening on what cannot listen", -1, 10022},
    {"names before start-up", 0, 0},
    {"numbers before start-up", 0, 0},
    {"receiving after a refused connect", 0, 0},
    {"receiving after a refused send", 0, 0},
    {"receiving after a reset", 0, 0},
    {"receiving from a peer that closed with unread data", 0, 0},
    {"receiving on an unbound socket", -1, 10035},
    {"room for a part of a text", -1, -12},
    {"select before start-up", -1, 10022},
    {"selecting a connect that was refused", 2, 0},  // readable besides, at times
    {"sending a datagram of negative length", -1, 10040},
    {"sending a datagram without a peer", -1, 10022},
    {"sending to a closed peer", -1, 10054},
    {"sending without a connection", -1, 10054},
    {"the peer of an unfinished connect", -1, 10057},
    {"the handle of a file", -1, 10022},
    {"the text of a short address", -1, 10047},
    {"the text of a short address", 0, 0},
    {"the text of an address before start-up", 0, 0},
    {"the text of no family", -1, 10047},
    {"the text of null", -1, -1073741819},
    {"transfer before the connection exists", -1, 10035},
    {"transfer before start-up", -1, 10038},
};

// In these Wine waits for ever, crashes, or goes another way altogether.
constexpr std::string_view Unanswered[] = {
    "a clean-up while a call waits",                 // waits
    "a list without a type",                         // has an entry for each type
    "a part of a large buffer",                      // times out as a whole
    "a send whose socket is closed",                 // waits
    "accepting with too little room",                // takes the connection
    "an unreachable datagram peer",                  // is never told
    "connecting to null",                            // crashes
    "room for a part of a sender",                   // takes the datagram
    "sending until the connection exists",           // would block
    "the name of a socket for null",                 // crashes
    "the outcome of a connect that was begun anew",  // is another attempt
    "the port of a client that nobody bound",        // is everybody's
    "the port of a closed listener",                 // stays taken
    "the scope of an interface",                     // is its name
    "the whole access list of a file",               // adds the system's own user
    "transfer on a listener",                        // waits
    "transfer with unknown flags",                   // ignores them
    "two listeners that reuse",                      // refuses the second
    "using a stream after a refusal",                // aborts once
    "waiting for a datagram on an unbound socket",   // waits
};

// A listed situation that Wine at times answers as Windows does, with Windows' answer.
struct VaryingAnswer {
    std::string_view situation;
    long long windows;
};

constexpr VaryingAnswer Varying[] = {
    {"receiving from a peer that closed with unread data", 10054},
    {"selecting a connect that was refused", 1},
};

std::mutex mutex;

std::set<std::string_view>& Met() {
    static std::set<std::string_view> situations;
    return situations;
}

bool IsListed(std::string_view situation) {
    const auto isIt = [&](const WineAnswer& answer) { return answer.situation == situation; };
    return std::any_of(std::begin(Answers), std::end(Answers), isIt);
}

const VaryingAnswer* FindVarying(std::string_view situation) {
    const auto isIt = [&](const VaryingAnswer& answer) { return answer.situation == situation; };
    const auto found = std::find_if(std::begin(Varying), std::end(Varying), isIt);
    return found != std::end(Varying) ? found : nullptr;
}

void Note(std::string_view situation) {
    const std::lock_guard lock(mutex);
    Met().insert(situation);
}

// Tells at the end of the run how many situations there are, and which of the listed answers came.
class Report : public testing::EmptyTestEventListener {
    void OnTestProgramEnd(const testing::UnitTest& tests) override {
        const std::lock_guard lock(mutex);
        std::printf("%d situations; %d exceptions are listed for Wine, %d of them were met\n",
                    tests.test_to_run_count(),
                    static_cast<int>(std::size(Answers) + std::size(Unanswered)),
                    static_cast<int>(Met().size()));
        for (const std::string_view situation : Met())
            std::printf("  %.*s\n", static_cast<int>(situation.size()), situation.data());
    }
};

[[maybe_unused]] const bool reporting = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new Report);
    return true;
}();

}  // namespace

bool IsWinesAnswer(std::string_view situation, long long result, int error) {
    if (situation.empty()) return false;
    if (!IsListed(situation)) ADD_FAILURE() << "not in the list of Wine's answers: " << situation;
    if (!RunsOnWine()) return false;
    const auto isIt = [&](const WineAnswer& answer) {
        return answer.situation == situation && answer.result == result &&
               (answer.error == error || result != -1);
    };
    const bool known = std::any_of(std::begin(Answers), std::end(Answers), isIt);
    if (known) Note(situation);
    return known;
}

bool NotesVaryingAnswers(std::string_view situation) {
    const VaryingAnswer* const varying = RunsOnWine() ? FindVarying(situation) : nullptr;
    if (varying == nullptr) return false;
    NoteAnswer(varying->windows, varying->windows);
    for (const WineAnswer& answer : Answers) {
        if (answer.situation == situation)
            NoteAnswer(varying->windows, answer.result == -1 ? answer.error : answer.result);
    }
    return true;
}

bool WineGivesNoAnswer(std::string_view situation) {
    const auto end = std::end(Unanswered);
    const bool listed = std::find(std::begin(Unanswered), end, situation) != end;
    if (!listed) ADD_FAILURE() << "not in the list of what Wine gives no answer to: " << situation;
    if (!RunsOnWine()) return false;
    Note(situation);
    NoteNoAnswer();
    return true;
}

bool LeavesLastErrorAfterSuccess() {
    if (!RunsOnWine()) return false;
    Note(LastErrorAfterSuccess);
    return true;
}

}  // namespace Conformance
