// Calls of the C library that a test makes fail, counts, or plays itself.
//
// The test programs define the C library's functions that the library under test calls (see
// SystemCalls.cpp), so that each of its calls comes by here first. It goes on to the C library, or
// the sanitizer before it, unless the test has a scope open that says otherwise:
//
//     // Every call; the first two; from the third on; of one option.
//     FailingCall fails(SystemCall::Getsockname, ENOBUFS);
//     FailingCall fails(SystemCall::Accept4, EPROTO, {.count = 2});
//     FailingCall fails(SystemCall::Recv, ECONNRESET, {.first = 3});
//     FailingCall fails(SystemCall::Setsockopt, EPERM, {.option = SO_REUSEPORT});
//     HookedCall hooked(SystemCall::Ppoll, [](Call& call) {
//         DoSomethingBefore();
//         return call.Make();
//     });
//     EXPECT_EQ(fails.Seen(), 1U);
//
// What counts as a call of the library: in the conformance tests, which are one program with the
// platform floor, each call of the program, the test's own included; in the loopback tests each
// call of the module. So a scope is best drawn close around the call that is tested. Calls that the
// C library makes inside, and those made while a hook runs, are never seen.
//
// A call that is missing takes a row here, a definition in SystemCalls.cpp or NameCalls.cpp, or in
// FurtherSystemCalls.cpp if only the tests in tests/faults need it, and, if it tells failures
// otherwise than by -1 and errno, a line in Call::Fail.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <thread>

namespace SystemCalls {

enum class SystemCall {
    Accept4,
    Bind,
    ClockNanosleep,
    Close,
    Closedir,
    Connect,
    EpollCreate1,
    EpollCtl,
    EpollWait,
    Fclose,
    Fcntl,
    Fdopendir,
    Fopen,
    Fstat,
    Fstatat,
    Fstatfs,
    Getaddrinfo,
    Getenv,  // and secure_getenv
    Gethostbyaddr,
    Gethostbyname,
    Gethostname,
    Getifaddrs,
    Getline,
    Getnameinfo,
    Getpeername,
    Getrlimit,
    Getsockname,
    Getsockopt,
    Getsourcefilter,
    IfNameindex,
    Ioctl,
    Listen,
    Lseek,
    Open,
    Openat,
    Poll,
    Ppoll,
    Pread,
    PthreadKeyCreate,
    PthreadSetspecific,
    Read,
    Readdir,
    Readlinkat,
    Recv,
    Recvfrom,
    Recvmsg,
    RegisterAtfork,
    ResNinit,
    ResNquerydomain,
    Send,
    Sendmsg,
    Sendto,
    Setsockopt,
    Shutdown,
    Sigtimedwait,
    Socket,
    Syscall,
    Write,
    Any,  // of a hook: whichever
};

// Which of the calls in the scope are meant; without anything else all.
struct Occasion {
    static constexpr unsigned int Always = ~0U;

    // Of those that fit the fields below, counted from 1.
    unsigned int first = 1;
    unsigned int count = Always;

    // The arguments: a socket's number, the level and the option of getsockopt and setsockopt. The
    // request of ioctl, the command of fcntl and the number of syscall count as option.
    std::optional<int> descriptor = {};
    std::optional<int> level = {};
    std::optional<int> option = {};

    // Otherwise only calls of the thread that opened the scope.
    bool inAnyThread = false;
};

// Results and arguments of all types, as they are passed in registers.
using Word = std::intptr_t;
inline constexpr std::size_t MostArguments = 8;
using Arguments = std::array<Word, MostArguments>;

// The real call with its arguments, which live as long as it runs. Nothing is allocated for it:
// the library may be in want of memory.
class RealCall {
public:
    template <typename Callable>
    explicit RealCall(const Callable& callable) noexcept
        : callable_(&callable),
          make_([](const void* it) { return (*static_cast<const Callable*>(it))(); }) {}

    Word Make() const { return make_(callable_); }

private:
    const void* callable_;
    Word (*make_)(const void*);
};

// A call of the library's that has come to a hook.
class Call {
public:
    Call(SystemCall which, const Arguments& arguments, const RealCall& real) noexcept
        : which_(which), arguments_(arguments), real_(real) {}

    SystemCall Which() const noexcept { return which_; }

    // Makes the call. The result is the C library's, and errno as that leaves it.
    Word Make() const { return real_.Make(); }

    // Fails the call as the C library would, by -1 or null and errno. Names are told otherwise:
    // getaddrinfo and getnameinfo take a number of EAI_..., or an errno, which they tell as
    // EAI_SYSTEM; gethostbyname and gethostbyaddr take a number of the resolver, HOST_NOT_FOUND for
    // one, or a larger errno, which they tell as NETDB_INTERNAL. The functions of threads return
    // the number, those of the resolver's own interface -1.
    Word Fail(int error) const noexcept;

    Word Argument(std::size_t index) const noexcept { return arguments_.at(index); }
    template <typename Type>
    Type* Pointer(std::size_t index) const noexcept {
        return reinterpret_cast<Type*>(arguments_.at(index));
    }

private:
    Word FailLookUp(std::size_t resultArgument, int error) const noexcept;

    SystemCall which_;
    const Arguments& arguments_;
    const RealCall& real_;
};

// Runs in place of the call, in the calling thread; returns the call's result and sets errno with
// it. It may make the real call, before, after or never.
using Hook = std::function<Word(Call&)>;

// Hooks a call for its lifetime. Of several hooks that mean the same call the newest acts. The end
// of the scope waits for hooks that still run in other threads.
class HookedCall {
public:
    HookedCall(SystemCall which, Hook hook, const Occasion& occasion = {});
    ~HookedCall();
    HookedCall(const HookedCall&) = delete;
    HookedCall& operator=(const HookedCall&) = delete;

    // How many calls have fitted the occasion's arguments, the first and the count apart.
    unsigned int Seen() const;

private:
    friend class HookList;

    bool Fits(SystemCall which, const Arguments& arguments) const noexcept;
    bool Acts() noexcept;

    const SystemCall which_;
    const Hook hook_;
    const Occasion occasion_;
    const std::thread::id thread_ = std::this_thread::get_id();
    unsigned int seen_ = 0;
    unsigned int running_ = 0;
};

// Fails a call for its lifetime, see Call::Fail for the number.
class FailingCall : public HookedCall {
public:
    FailingCall(SystemCall which, int error, const Occasion& occasion = {})
        : HookedCall(
              which, [error](const Call& call) { return call.Fail(error); }, occasion) {}
};

// Counts calls for its lifetime and lets them be.
class CountedCall : public HookedCall {
public:
    explicit CountedCall(SystemCall which, const Occasion& occasion = {})
        : HookedCall(
              which, [](const Call& call) { return call.Make(); }, occasion) {}
};

}  // namespace SystemCalls
