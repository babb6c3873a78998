#include "faults/posix/Injector.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <ctime>

#include "faults/posix/ErrorNumbers.h"

namespace Faults {

namespace {

using SystemCalls::Call;
using SystemCalls::SystemCall;
using SystemCalls::Word;

// A number that no call gives.
constexpr int Spoiled = 4242;

// Nobody has the time for a wait of whole seconds in which nothing happens. It ends at a given
// time; one that gives way to another thread has a length, and is needed.
bool SleepsLong(const Call& call) noexcept {
    return call.Which() == SystemCall::ClockNanosleep && call.Argument(1) == TIMER_ABSTIME;
}

// A call that goes on after such a failure would go on for ever, so it lasts only so many times.
constexpr unsigned int MostRepetitions = 30;

bool IsPassingFailure(int error) noexcept {
    return error == EINTR || error == EAGAIN || error == ECONNABORTED || error == EINPROGRESS ||
           error == EALREADY;
}

// The descriptor is gone even if closing fails, an interrupted connect goes on, and a connection
// that was reset had been established.
bool IsDoneAllTheSame(const Call& call, int error) noexcept {
    switch (call.Which()) {
        case SystemCall::Close:
        case SystemCall::Closedir:
        case SystemCall::Fclose:
            return true;
        case SystemCall::Connect:
            return error == EINTR || error == EINPROGRESS || error == ECONNRESET;
        default:
            return false;
    }
}

Word Fail(Call& call, int error) noexcept {
    if (IsDoneAllTheSame(call, error)) call.Make();
    return call.Fail(error);
}

// Fewer bytes than asked for; none, which is the end; time that was over at once; no address.
Word AnswerOddly(Call& call) noexcept {
    const int descriptor = static_cast<int>(call.Argument(0));
    switch (call.Which()) {
        case SystemCall::Send:
            return ::send(descriptor, call.Pointer<void>(1), 1, static_cast<int>(call.Argument(3)));
        case SystemCall::Recv:
            return ::recv(descriptor, call.Pointer<void>(1), 1, static_cast<int>(call.Argument(3)));
        case SystemCall::Write:
            return ::write(descriptor, call.Pointer<void>(1), 1);
        case SystemCall::Read:
            return ::read(descriptor, call.Pointer<void>(1), 1);
        case SystemCall::Getsockname:
        case SystemCall::Getpeername: {
            const Word result = call.Make();
            *call.Pointer<socklen_t>(2) = 0;
            return result;
        }
        case SystemCall::Accept4: {
            const Word result = call.Make();
            if (auto* const length = call.Pointer<socklen_t>(2)) *length = 0;
            return result;
        }
        default:
            return 0;
    }
}

bool MakesDescriptor(const Call& call) noexcept {
    switch (call.Which()) {
        case SystemCall::Socket:
        case SystemCall::Accept4:
        case SystemCall::Open:
        case SystemCall::Openat:
        case SystemCall::EpollCreate1:
        case SystemCall::Syscall:
            return true;
        case SystemCall::Fcntl:
            return call.Argument(1) == F_DUPFD || call.Argument(1) == F_DUPFD_CLOEXEC;
        default:
            return false;
    }
}

bool IsMemory(Fault::Kind kind) noexcept {
    return kind == Fault::Kind::ModuleMemory || kind == Fault::Kind::LibraryMemory;
}

}  // namespace

bool HasOddSuccess(SystemCall which) noexcept {
    switch (which) {
        case SystemCall::Send:
        case SystemCall::Recv:
        case SystemCall::Write:
        case SystemCall::Read:
        case SystemCall::Pread:
        case SystemCall::Ppoll:
        case SystemCall::Poll:
        case SystemCall::EpollWait:
        case SystemCall::Getsockname:
        case SystemCall::Getpeername:
        case SystemCall::Accept4:
            return true;
        default:
            return false;
    }
}

std::string TextOf(const Fault& fault) {
    const std::string count =
        std::to_string(fault.first) + (fault.lasting ? " and all further" : "");
    switch (fault.kind) {
        case Fault::Kind::None:
            return "no fault";
        case Fault::Kind::ModuleMemory:
            return "allocation " + count;
        case Fault::Kind::LibraryMemory:
            return "allocation " + count + " of the C library";
        default:
            break;
    }
    const std::string text = std::string(RowOf(fault.which).symbol) + ", call " + count +
                             (fault.cold ? " of the first run" : "");
    if (fault.kind == Fault::Kind::OddSuccess) return text + ": odd success";
    return text + ": " + SymbolOf(fault.which, fault.error);
}

Injector::Injector()
    : hook_(SystemCalls::SystemCall::Any, [this](Call& call) { return Act(call); },
            {.inAnyThread = true}) {}

void Injector::Begin(const Fault& fault) noexcept {
    fault_ = fault;
    strikes_ = 0;
    wasInheritable_ = false;
    std::fill(std::begin(counts_), std::end(counts_), 0U);
    counting_ = true;
    const bool library = fault.kind == Fault::Kind::LibraryMemory;
    FailAllocation(library ? Allocator::SystemLibrary : Allocator::Module,
                   IsMemory(fault.kind) ? fault.first : 0, fault.lasting);
}

void Injector::End() noexcept {
    FailNoAllocation();
    counting_ = false;
}

bool Injector::HasStruck() const noexcept {
    return IsMemory(fault_.kind) ? HasAllocationFailed() : strikes_ > 0;
}

bool Injector::Strikes(SystemCall which) noexcept {
    const unsigned int n = ++counts_[static_cast<std::size_t>(which)];
    if (which != fault_.which || IsMemory(fault_.kind) || fault_.kind == Fault::Kind::None)
        return false;
    if (fault_.lasting ? n < fault_.first : n != fault_.first) return false;
    ++strikes_;
    return !IsPassingFailure(fault_.error) || strikes_ <= MostRepetitions;
}

void Injector::CheckInheritance(const Call& call, Word result) noexcept {
    if (result < 0 || !MakesDescriptor(call)) return;
    const int flags = ::fcntl(static_cast<int>(result), F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) wasInheritable_ = true;
}

Word Injector::Act(Call& call) noexcept {
    if (!counting_) return call.Make();
    if (Strikes(call.Which())) {
        const bool odd = fault_.kind == Fault::Kind::OddSuccess;
        return odd ? AnswerOddly(call) : Fail(call, fault_.error);
    }
    const Word result = SleepsLong(call) ? 0 : call.Make();
    const int error = errno;
    CheckInheritance(call, result);
    // What reports by null and errno reports its end by null alone.
    const bool good = result >= 0 && call.Which() != SystemCall::Readdir;
    errno = good ? Spoiled : error;
    return result;
}

}  // namespace Faults
