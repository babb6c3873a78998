#include "scripted/Transcript.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "Call.h"

namespace Scripted {

namespace {

using Observer = std::function<void(const Event&)>;

struct State {
    std::vector<Event> events;
    std::multimap<std::string, Observer> observers;
    std::vector<Observer> observersOfAll;
    std::multiset<std::string> ledger;
    int disturbance = 0;
};

State state;
thread_local constinit int lastError = 0;

const bool forgotten = AtReset([] {
    State ended;
    {
        const auto lock = LockState();
        std::swap(state, ended);
    }
    lastError = 0;
});

std::vector<Observer> ObserversOf(const std::string& call) {
    const auto lock = LockState();
    std::vector<Observer> found = state.observersOfAll;
    const auto [first, last] = state.observers.equal_range(call);
    for (auto observer = first; observer != last; ++observer)
        found.push_back(observer->second);
    return found;
}

void Keep(const Event& event) {
    const auto lock = LockState();
    state.events.push_back(event);
}

}  // namespace

std::unique_lock<std::mutex> LockState() {
    static std::mutex mutex;
    return std::unique_lock(mutex);
}

void Record(const Event& event) {
    const Allocations::Uncounted uncounted;
    Keep(event);
    for (const Observer& observer : ObserversOf(event.call))
        observer(event);
}

std::vector<Event> Events() {
    const auto lock = LockState();
    return state.events;
}

std::vector<Event> EventsOf(const std::string& call) {
    std::vector<Event> events = Events();
    std::erase_if(events, [&](const Event& event) { return event.call != call; });
    return events;
}

Lines TranscriptWithout(const std::vector<std::string>& calls) {
    Lines lines;
    for (const Event& event : Events())
        if (std::find(calls.begin(), calls.end(), event.call) == calls.end())
            lines.push_back(event.text);
    return lines;
}

Lines Transcript() {
    return TranscriptWithout({});
}

int CountOf(const std::string& call) {
    return static_cast<int>(EventsOf(call).size());
}

Event LastEventOf(const std::string& call) {
    const std::vector<Event> events = EventsOf(call);
    if (!events.empty()) return events.back();
    ADD_FAILURE() << "no event of " << call;
    return {};
}

void ClearTranscript() {
    const auto lock = LockState();
    state.events.clear();
}

void Observe(const std::string& call, Observer observer) {
    const auto lock = LockState();
    state.observers.emplace(call, std::move(observer));
}

void ObserveAll(Observer observer) {
    const auto lock = LockState();
    state.observersOfAll.push_back(std::move(observer));
}

Lines Ledger() {
    const auto lock = LockState();
    return {state.ledger.begin(), state.ledger.end()};
}

void OpenInLedger(const std::string& entry) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    state.ledger.insert(entry);
}

bool CloseInLedger(const std::string& entry) {
    const Allocations::Uncounted uncounted;
    const auto lock = LockState();
    const auto found = state.ledger.find(entry);
    if (found == state.ledger.end()) {
        state.ledger.insert("surplus " + entry);
        return false;
    }
    state.ledger.erase(found);
    return true;
}

bool IsInLedger(const std::string& entry) {
    const auto lock = LockState();
    return state.ledger.count(entry) != 0;
}

void ForgetInLedger(const std::string& entry) {
    const auto lock = LockState();
    const auto found = state.ledger.find(entry);
    if (found == state.ledger.end())
        ADD_FAILURE() << entry << " is not in the ledger";
    else
        state.ledger.erase(found);
}

int LastError() {
    return lastError;
}

void SetLastError(int error) {
    lastError = error;
}

void DisturbLastErrorWith(int error) {
    const auto lock = LockState();
    state.disturbance = error;
}

void Call::Succeed() const noexcept {
    const auto lock = LockState();
    lastError = state.disturbance;
}

}  // namespace Scripted
