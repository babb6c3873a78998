// The seam's select.
#include <gtest/gtest.h>

#include <algorithm>

#include "Call.h"

namespace Winsock {

namespace {

using Scripted::Call;

void AddSet(Call& call, const HandleSet* set) {
    if (set == nullptr) {
        call.Plain("null");
        return;
    }
    if (set->count > HandleSet::Room) ADD_FAILURE() << "a set counts " << set->count << " handles";
    call.Open();
    for (unsigned int index = 0; index < std::min(set->count, HandleSet::Room); ++index)
        call.Handle(set->handles[index]);
    call.Close();
}

void AddTime(Call& call, const TimeValue* time) {
    if (time == nullptr)
        call.Plain("null");
    else
        call.Open().Number(time->seconds).Number(time->microseconds).Close();
}

void Leave(HandleSet* set, const std::vector<Handle>& ready) {
    if (set == nullptr) {
        EXPECT_TRUE(ready.empty()) << "select has no set for what is ready";
        return;
    }
    set->count = static_cast<unsigned int>(ready.size());
    std::copy(ready.begin(), ready.end(), set->handles);
}

}  // namespace

int select(int ignored, HandleSet* read, HandleSet* write, HandleSet* except,
           const TimeValue* timeout) {
    Call call("select");
    call.Number(ignored);
    for (const HandleSet* const set : {read, write, except})
        AddSet(call, set);
    AddTime(call, timeout);
    const Scripted::Answer& answer = call.Play();
    if (call.IsFailure()) return static_cast<int>(call.Finish());
    Leave(read, answer.readable);
    Leave(write, answer.writable);
    Leave(except, answer.exceptional);
    return static_cast<int>(call.Finish());
}

}  // namespace Winsock
