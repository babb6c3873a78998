// Nothing may be lost when an operation ends at any of its calls, or runs out of memory.
#include <algorithm>

#include "FaultTelling.h"

namespace SocketTests {

namespace {

constexpr Circumstances Usual = {};

template <std::size_t Count>
bool IsOneOf(const char* const (&names)[Count], const std::string& name) {
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char* each) { return name == each; });
}

// Calls in which a thread may end when it is cancelled; what they throw then must pass.
bool MayEnd(const FaultStep& step) {
    static constexpr const char* Calls[] = {
        "WSAStartup",  "socket",         "bind",          "connect",       "listen",
        "accept",      "getsockname",    "getpeername",   "send",          "recv",
        "sendto",      "recvfrom",       "select",        "setsockopt",    "ioctlsocket",
        "getaddrinfo", "getnameinfo",    "gethostbyname", "gethostbyaddr", "gethostname",
        "inet_addr",   "Sleep",          "ComputerName",  "GetVersionExW", "ErrorDescription",
        "OpenKey",     "OpenSubKey",     "ReadValue",     "SubKeyNames",   "CreateRouter",
        "VelSynch up", "VelRegistry up", "VelLog up"};
    return IsOneOf(Calls, step.call);
}

// A record is lost then, and no more.
bool IsForARecord(const FaultStep& step) {
    return !step.when.empty();
}

bool IsCleanUp(const Event& event) {
    static constexpr const char* Calls[] = {"freeaddrinfo",    "WSACleanup",       "closesocket",
                                            "WSAGetLastError", "CloseKey",         "~Router",
                                            "VelSynch down",   "VelRegistry down", "VelLog down",
                                            "LogMessage",      "WideFromCodePage"};
    return IsOneOf(Calls, event.call);
}

// Behind the call of that number of those with its name.
void ExpectOnlyCleanUpBehind(const std::string& call, std::ptrdiff_t earlier) {
    const std::vector<Event> events = Events();
    auto event = events.begin();
    for (; event != events.end(); ++event)
        if (event->call == call && earlier-- == 0) break;
    ASSERT_NE(event, events.end()) << call;
    for (++event; event != events.end(); ++event)
        EXPECT_TRUE(IsCleanUp(*event)) << event->text << " behind " << call;
}

// What may have been leaked are the story's leaks.
void ExpectNoOtherLeaks(const FaultScript& script, const Lines& before) {
    for (const std::string& change : Difference(before, Ledger())) {
        const bool isKnown = std::find(script.leaks.begin(), script.leaks.end(),
                                       change.substr(1)) != script.leaks.end();
        EXPECT_TRUE(change.starts_with('+') && isKnown) << change;
    }
    ForgetLeaks(script.leaks);
}

class Losses {
public:
    Losses(const FaultTable& table, const FaultStory& story, const FaultScript& script)
        : script_(script),
          operation_(table.operations.at(story.operation)),
          withoutMemory_(table.withoutMemory) {}

    void ExpectNoneWhenCallsThrow() const {
        for (std::size_t step = 0; step < script_.steps.size(); ++step)
            if (MayEnd(script_.steps[step]) && !IsForARecord(script_.steps[step])) ThrowAt(step);
    }

    void ExpectNoneWithoutMemory() const {
        FailEveryAllocation([&](std::size_t n) { return RunWithout(n); });
    }

private:
    void ThrowAt(std::size_t step) const {
        const std::string& call = script_.steps[step].call;
        SCOPED_TRACE(call + " throws as step " + std::to_string(step));
        const auto isSame = [&](const FaultStep& other) { return other.call == call; };
        const auto first = script_.steps.begin();
        const auto place = first + static_cast<std::ptrdiff_t>(step);
        const Lines before = Ledger();
        {
            const Trial trial = operation_();
            telling_.Prepare(step);
            ClearTranscript();
            EXPECT_EQ(OutcomeOf(trial.act), "passes");
            ExpectOnlyCleanUpBehind(call, std::count_if(first, place, isSame));
            EndTelling();
        }
        ExpectNoOtherLeaks(script_, before);
    }

    // Returns whether that many allocations were made.
    bool RunWithout(std::size_t n) const {
        SCOPED_TRACE("without the allocation " + std::to_string(n));
        const Lines before = Ledger();
        Starved starved{};
        {
            const Trial trial = operation_();
            telling_.Prepare();
            std::string outcome;
            starved = Support::Starve(n, [&] { outcome = OutcomeOf(trial.act); });
            if (!starved.outOfMemory) {
                EXPECT_TRUE(outcome == telling_.Outcome() || outcome == withoutMemory_) << outcome;
            }
            EndTelling();
        }
        ExpectNoOtherLeaks(script_, before);
        return starved.happened;
    }

    const FaultScript& script_;
    const std::function<Trial()>& operation_;
    const std::string withoutMemory_;
    const Telling telling_{script_, script_.numbers.front(), Usual};
};

}  // namespace

void ExpectNothingIsLost(const FaultTable& table) {
    for (const FaultStory& story : table.stories) {
        SCOPED_TRACE(story.operation);
        const FaultScript script = ReadStory(story);
        const Losses losses(table, story, script);
        losses.ExpectNoneWhenCallsThrow();
        losses.ExpectNoneWithoutMemory();
    }
}

}  // namespace SocketTests
