#include "support/posix/SystemCallFaults.h"

#include <dlfcn.h>
#include <link.h>
#include <netdb.h>

#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "support/posix/Interception.h"

namespace SystemCalls {

namespace {

// Set while the thread runs a hook or looks for one.
constinit thread_local bool passing = false;

class Passing {
public:
    Passing() noexcept { passing = true; }
    ~Passing() { passing = false; }
    Passing(const Passing&) = delete;
    Passing& operator=(const Passing&) = delete;
};

constinit std::atomic<int> hookCount = 0;

// The module where the program has loaded it, and otherwise the program, which comes first.
const link_map* ObjectUnderTest() noexcept {
    constexpr std::string_view module = "/libvelsock.so";
    const auto* const program = static_cast<const link_map*>(::dlopen(nullptr, RTLD_LAZY));
    for (const link_map* object = program; object != nullptr; object = object->l_next) {
        if (std::string_view(object->l_name).find(module) != std::string_view::npos) return object;
    }
    return program;
}

// Where an object's code lies.
struct CodeRange {
    std::uintptr_t base = 0;  // of the object
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
};

int FindCode(dl_phdr_info* object, std::size_t, void* found) noexcept {
    auto& range = *static_cast<CodeRange*>(found);
    if (object->dlpi_addr != range.base) return 0;
    for (int index = 0; index < object->dlpi_phnum; ++index) {
        const auto& segment = object->dlpi_phdr[index];
        if (segment.p_type != PT_LOAD || (segment.p_flags & PF_X) == 0) continue;
        range.begin = object->dlpi_addr + segment.p_vaddr;
        range.end = range.begin + segment.p_memsz;
    }
    return 1;
}

CodeRange CodeUnderTest() noexcept {
    CodeRange range;
    range.base = ObjectUnderTest()->l_addr;
    ::dl_iterate_phdr(FindCode, &range);
    return range;
}

// Where a call has its level and its option, if it has any.
struct Places {
    std::size_t level = MostArguments;
    std::size_t option = MostArguments;
};

Places PlacesOf(SystemCall which) noexcept {
    switch (which) {
        case SystemCall::Getsockopt:
        case SystemCall::Setsockopt:
            return {.level = 1, .option = 2};
        case SystemCall::Fcntl:
        case SystemCall::Ioctl:
            return {.option = 1};
        case SystemCall::Syscall:
            return {.option = 0};
        default:
            return {};
    }
}

bool IsAsked(const std::optional<int>& asked, const Arguments& arguments, std::size_t place) {
    if (!asked) return true;
    return place < arguments.size() && static_cast<int>(arguments[place]) == *asked;
}

}  // namespace

// All open hooks of the process. The lock is not held while a hook runs.
class HookList {
public:
    void Add(HookedCall& hook) {
        const std::lock_guard guard(lock_);
        hooks_.push_back(&hook);
        ++hookCount;
    }

    void Remove(const HookedCall& hook) {
        std::unique_lock guard(lock_);
        std::erase(hooks_, &hook);
        --hookCount;
        left_.wait(guard, [&hook] { return hook.running_ == 0; });
    }

    unsigned int Seen(const HookedCall& hook) {
        const std::lock_guard guard(lock_);
        return hook.seen_;
    }

    // The hook that is to act, which stays until it is left.
    HookedCall* Enter(SystemCall which, const Arguments& arguments) {
        const std::lock_guard guard(lock_);
        HookedCall* acting = nullptr;
        for (auto hook = hooks_.rbegin(); hook != hooks_.rend(); ++hook) {
            if ((*hook)->Fits(which, arguments) && (*hook)->Acts() && acting == nullptr) {
                acting = *hook;
            }
        }
        if (acting != nullptr) ++acting->running_;
        return acting;
    }

    void Leave(HookedCall& hook) {
        const std::lock_guard guard(lock_);
        --hook.running_;
        left_.notify_all();
    }

    static const Hook& HookOf(const HookedCall& hook) { return hook.hook_; }

private:
    std::mutex lock_;
    std::condition_variable left_;
    std::vector<HookedCall*> hooks_;
};

namespace {

// Never destroyed, since the C library is called until the process has ended.
HookList& Hooks() {
    static HookList& hooks = *new HookList;
    return hooks;
}

// The hook that means the call, for as long as it runs.
class ActingHook {
public:
    ActingHook(SystemCall which, const Arguments& arguments)
        : hook_(Hooks().Enter(which, arguments)) {}
    ~ActingHook() {
        if (hook_ != nullptr) Hooks().Leave(*hook_);
    }
    ActingHook(const ActingHook&) = delete;
    ActingHook& operator=(const ActingHook&) = delete;

    explicit operator bool() const noexcept { return hook_ != nullptr; }
    Word Act(Call& call) const { return HookList::HookOf(*hook_)(call); }

private:
    HookedCall* hook_;
};

}  // namespace

HookedCall::HookedCall(SystemCall which, Hook hook, const Occasion& occasion)
    : which_(which), hook_(std::move(hook)), occasion_(occasion) {
    const Passing unseen;
    Hooks().Add(*this);
}

HookedCall::~HookedCall() {
    const Passing unseen;
    Hooks().Remove(*this);
}

unsigned int HookedCall::Seen() const {
    return Hooks().Seen(*this);
}

bool HookedCall::Fits(SystemCall which, const Arguments& arguments) const noexcept {
    if (which_ != which && which_ != SystemCall::Any) return false;
    if (!occasion_.inAnyThread && std::this_thread::get_id() != thread_) return false;
    const Places places = PlacesOf(which);
    return IsAsked(occasion_.descriptor, arguments, 0) &&
           IsAsked(occasion_.level, arguments, places.level) &&
           IsAsked(occasion_.option, arguments, places.option);
}

// Counts the call, and tells whether it is one that the hook acts on.
bool HookedCall::Acts() noexcept {
    ++seen_;
    return seen_ >= occasion_.first && seen_ - occasion_.first < occasion_.count;
}

// As the C library tells it: the host is null, the reason a number of the resolver.
Word Call::FailLookUp(std::size_t resultArgument, int error) const noexcept {
    *Pointer<hostent*>(resultArgument) = nullptr;
    const bool internal = error > NO_DATA;
    *Pointer<int>(resultArgument + 1) = internal ? NETDB_INTERNAL : error;
    if (internal) return errno = error;
    return error == TRY_AGAIN ? EAGAIN : 0;
}

Word Call::Fail(int error) const noexcept {
    switch (which_) {
        case SystemCall::Getaddrinfo:
        case SystemCall::Getnameinfo:
            if (error < 0) return error;
            errno = error;
            return EAI_SYSTEM;
        case SystemCall::Gethostbyname:
            return FailLookUp(5, error);
        case SystemCall::Gethostbyaddr:
            return FailLookUp(6, error);
        case SystemCall::ClockNanosleep:
        case SystemCall::PthreadKeyCreate:
        case SystemCall::PthreadSetspecific:
        case SystemCall::RegisterAtfork:
            return error;
        case SystemCall::Fdopendir:
        case SystemCall::Fopen:
        case SystemCall::Getenv:
        case SystemCall::IfNameindex:
        case SystemCall::Readdir:
            errno = error;
            return 0;
        default:
            errno = error;
            return -1;
    }
}

bool IsUnderTest(const void* caller) noexcept {
    static const CodeRange code = CodeUnderTest();
    const auto place = reinterpret_cast<std::uintptr_t>(caller);
    return place >= code.begin && place < code.end;
}

bool IsPassing() noexcept {
    return passing;
}

void* FindReal(const char* name) noexcept {
    const int error = errno;
    char sanitizers[64] = "__interceptor_";
    std::strncat(sanitizers, name, sizeof sanitizers - sizeof "__interceptor_");
    void* const found = ::dlsym(RTLD_DEFAULT, sanitizers);
    void* const real = found != nullptr ? found : ::dlsym(RTLD_NEXT, name);
    errno = error;
    return real;
}

bool AnyHooks() noexcept {
    return hookCount.load(std::memory_order_relaxed) > 0 && !passing;
}

Word Offer(SystemCall which, const void* caller, const Arguments& arguments, const RealCall& real) {
    // A call that succeeds leaves errno alone, and so must the way to it.
    const int error = errno;
    const Passing unseen;
    const bool meant = IsUnderTest(caller);
    errno = error;
    if (!meant) return real.Make();
    const ActingHook hook(which, arguments);
    errno = error;
    Call call(which, arguments, real);
    return hook ? hook.Act(call) : real.Make();
}

}  // namespace SystemCalls
