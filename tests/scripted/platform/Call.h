// One call of the seam, or one event of the services, in the making.
#pragma once

#include <mutex>

#include "scripted/Allocations.h"
#include "scripted/Script.h"
#include "scripted/Transcript.h"

namespace Scripted {

// Guards all of the scripted platform's state. Never held while code of a test runs.
std::unique_lock<std::mutex> LockState();

// Has the function called by every Reset. True, so that a constant can be initialized with it.
bool AtReset(void (*forget)());

// Counts allocations again within an Uncounted scope: for what is handed to the code under test.
class Counted {
public:
    Counted() noexcept;
    ~Counted();
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;

private:
    int depth_;
};

// Starts to count memory again, and what is alive of the memory counted since.
void BeginAllocations() noexcept;
struct Live {
    long long blocks;
    long long bytes;
};
Live LiveMemory() noexcept;

// A call from the first argument to its answer: the arguments are added in their order, Play
// records the event, lets the observers look and takes the answer, which may be an exception.
class Call {
public:
    explicit Call(std::string name);

    Call& Number(long long number);
    Call& Hex(long long number, int digits = 0);
    Call& Handle(Winsock::Handle handle);
    // Adds to the text only.
    Call& Plain(const std::string& text);
    // The arguments between the two stand in braces.
    Call& Open();
    Call& Close();
    // Keeps the argument's bytes and pointer as well.
    Call& Bytes(const void* bytes, int length, const std::string& text);
    Call& Quoted(const char* bytes, int length);
    Call& Quoted(const char* text);
    Call& Quoted(const unsigned short* text);
    Call& Pointer(const void* pointer);
    // The event's text is the name alone.
    Call& Bare();

    const Answer& Play();

    // Ends the call: the last error is set as the answer demands, and the result is the scripted
    // one, or the one given for the answer at hand.
    long long Finish(long long usual = 0, long long failure = Winsock::SocketError);
    // Ends it as succeeding or failing, whatever the answer was.
    void Succeed() const noexcept;
    long long Fail(int error, long long failure = Winsock::SocketError) const noexcept;

    bool IsFailure() const noexcept { return answer_.kind == Answer::Kind::Failure; }
    bool IsUsual() const noexcept { return answer_.kind == Answer::Kind::Usual; }

private:
    void Separate();

    const Allocations::Uncounted uncounted_;
    bool bare_ = false;
    std::string arguments_;
    Event event_;
    Answer answer_;
};

Answer TakeAnswer(const std::string& call);
void Record(const Event& event);

// The ledger's two sides. Close is false, and leaves a "surplus" entry, when nothing of the name is
// open.
void OpenInLedger(const std::string& entry);
bool CloseInLedger(const std::string& entry);
bool IsInLedger(const std::string& entry);

std::string HexNumber(long long number, int digits = 0);
std::string QuotedBytes(const char* bytes, std::size_t length);
std::string QuotedUnits(std::u16string_view units);
std::string HexBytes(const void* bytes, int length);

}  // namespace Scripted
