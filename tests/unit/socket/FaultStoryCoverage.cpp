// Which calls the stories make fail, and with which numbers.
#include <algorithm>
#include <climits>
#include <set>

#include "ErrorTableExpectations.h"
#include "FaultStoryLines.h"

namespace SocketTests {

namespace {

// The calls that have no way to fail, or none that the layer could see.
bool CanFail(const FaultStep& step) {
    static constexpr const char* Unfailing[] = {
        "log",           "WSAGetLastError",  "freeaddrinfo",    "Sleep",
        "ComputerName",  "CloseKey",         "~Router",         "VelLog down",
        "VelSynch down", "VelRegistry down", "ErrorDescription"};
    return std::find(std::begin(Unfailing), std::end(Unfailing), step.call) == std::end(Unfailing);
}

// A call at a position in an operation: "Connect: getsockname 1".
using Sites = std::map<std::string, std::set<int>>;

void AddSites(const FaultStory& story, const FaultScript& script, Sites& reached, Sites& failed) {
    std::map<std::string, int> counts;
    for (const FaultStep& step : script.steps) {
        if (!CanFail(step)) continue;
        const std::string site = std::string(story.operation) + ": " + step.call + ' ' +
                                 std::to_string(++counts[step.call]);
        reached[site].insert(0);
        if (step.hasEachNumber) failed[site].insert(script.numbers.begin(), script.numbers.end());
        if (step.isFailure) failed[site];
    }
}

// What throws reports no number; some calls have not failed with the number 0.
bool IsEnough(const std::string& site, const std::set<int>& numbers) {
    const auto names = [&](const char* call) { return site.find(call) != std::string::npos; };
    for (const char* const call : {": CreateRouter", ": Vel"})
        if (names(call)) return true;
    const bool knowsNoFailureZero =
        names(": WSAStartup") || names(": Open") || names(": ReadValue") || names(": SubKeyNames");
    return numbers.size() + (knowsNoFailureZero ? 1 : 0) >= FaultNumbers().size();
}

void ExpectFailed(const Sites& reached, const Sites& failed) {
    EXPECT_FALSE(reached.empty());
    for (const auto& [site, numbers] : reached) {
        const auto found = failed.find(site);
        EXPECT_TRUE(found != failed.end() && IsEnough(site, found->second))
            << site << " does not fail with every number";
    }
}

}  // namespace

void ExpectEveryCallFails(const FaultTable& table) {
    Sites reached, failed;
    std::set<std::string> quiet;
    for (const FaultStory& story : table.stories) {
        const FaultScript script = ReadStory(story);
        AddSites(story, script, reached, failed);
        if (std::none_of(script.steps.begin(), script.steps.end(),
                         [](const FaultStep& step) { return step.isFailure; }))
            quiet.insert(story.operation);
    }
    ExpectFailed(reached, failed);
    for (const auto& [operation, make] : table.operations)
        EXPECT_EQ(quiet.count(operation), 1U) << operation << " never succeeds";
}

std::vector<int> FaultNumbers() {
    std::vector<int> numbers;
    for (std::size_t row = 0; row < FoundationTests::TerminatingRow; ++row) {
        const int key = FoundationTests::ExpectedErrorTable[row].key;
        if (std::find(numbers.begin(), numbers.end(), key) == numbers.end()) numbers.push_back(key);
    }
    const std::vector<int> unknown = {0,     -1,    8,       11,     122,   10043,
                                      10044, 10092, 10109,   12345,  65536, 65536 + 10035,
                                      65537, 65547, INT_MIN, INT_MAX};
    numbers.insert(numbers.end(), unknown.begin(), unknown.end());
    return numbers;
}

}  // namespace SocketTests
