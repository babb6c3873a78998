#include "faults/posix/Injector.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
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

bool IsOfCalls(Fault::Kind kind) noexcept {
    return kind == Fault::Kind::Failure || kind == Fault::Kind::OddSuccess;
}

// Those that the system's headers let pass the end of a thread.
bool MayEndThread(SystemCall which) noexcept {
    switch (which) {
        case SystemCall::Accept4:
        case SystemCall::ClockNanosleep:
        case SystemCall::Close:
        case SystemCall::Connect:
        case SystemCall::EpollWait:
        case SystemCall::Getaddrinfo:
        case SystemCall::Gethostbyaddr:
        case SystemCall::Gethostbyname:
        case SystemCall::Open:
        case SystemCall::Openat:
        case SystemCall::Poll:
        case SystemCall::Ppoll:
        case SystemCall::Read:
        case SystemCall::Recv:
        case SystemCall::Recvfrom:
        case SystemCall::Recvmsg:
        case SystemCall::Send:
        case SystemCall::Sendto:
        case SystemCall::Write:
            return true;
        default:
            return false;
    }
}

bool IsCancellable() noexcept {
    int state = PTHREAD_CANCEL_DISABLE;
    ::pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &state);
    ::pthread_setcancelstate(state, nullptr);
    return state == PTHREAD_CANCEL_ENABLE;
}

bool IsWriteIntoSocket(const Call& call) noexcept {
    if (call.Which() != SystemCall::Write || call.Argument(0) > STDERR_FILENO) return false;
    struct stat status = {};
    return ::fstat(static_cast<int>(call.Argument(0)), &status) == 0 && S_ISSOCK(status.st_mode);
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
            return "no fault" + TextOf(fault.conditions);
        case Fault::Kind::Cancellation:
            return "cancelled before call " + count;
        case Fault::Kind::Fork:
            return "forked before call " + count;
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
    thread_ = std::this_thread::get_id();
    strikes_ = 0;
    wasInheritable_ = false;
    wasWrittenIntoSocket_ = false;
    allCalls_ = 0;
    points_ = 0;
    descriptorsEnd_ = 0;
    endOfFork_ = 0;
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
    if (!fault_.conditions.AreUsual()) return true;
    return IsMemory(fault_.kind) ? HasAllocationFailed() : strikes_ > 0;
}

bool Injector::Strikes(SystemCall which) noexcept {
    const unsigned int n = ++counts_[static_cast<std::size_t>(which)];
    if (which != fault_.which || !IsOfCalls(fault_.kind)) return false;
    if (fault_.lasting ? n < fault_.first : n != fault_.first) return false;
    ++strikes_;
    return !IsPassingFailure(fault_.error) || strikes_ <= MostRepetitions;
}

// The request to cancel is there before the call, and takes effect where it may. In the forked
// process it does so at once.
void Injector::StrikeThread(SystemCall which) {
    const bool isPoint =
        std::this_thread::get_id() == thread_ && MayEndThread(which) && IsCancellable();
    if (isPoint) ++points_;
    ++allCalls_;
    const bool cancels = fault_.kind == Fault::Kind::Cancellation && allCalls_ == fault_.first;
    const bool forks = fault_.kind == Fault::Kind::Fork && isPoint && points_ == fault_.first;
    if (!cancels && !forks) return;
    ++strikes_;
    if (forks) return Fork();
    ::pthread_cancel(::pthread_self());
}

void Injector::Fork() {
    const pid_t child = ::fork();
    if (child != 0) {
        while (::waitpid(child, &endOfFork_, 0) < 0 && errno == EINTR) {
        }
        return;
    }
    ::alarm(30);
    ::pthread_cancel(::pthread_self());
    ::pthread_testcancel();
}

void Injector::CheckDescriptor(const Call& call, Word result) noexcept {
    if (result < 0 || !MakesDescriptor(call)) return;
    descriptorsEnd_ = std::max(descriptorsEnd_, static_cast<int>(result) + 1);
    const int flags = ::fcntl(static_cast<int>(result), F_GETFD);
    if (flags >= 0 && (flags & FD_CLOEXEC) == 0) wasInheritable_ = true;
}

Word Injector::Act(Call& call) {
    if (!counting_) return call.Make();
    StrikeThread(call.Which());
    if (IsWriteIntoSocket(call)) wasWrittenIntoSocket_ = true;
    if (Strikes(call.Which())) {
        const bool odd = fault_.kind == Fault::Kind::OddSuccess;
        return odd ? AnswerOddly(call) : Fail(call, fault_.error);
    }
    const Word result = SleepsLong(call) ? 0 : call.Make();
    const int error = errno;
    CheckDescriptor(call, result);
    // What reports by null and errno reports its end by null alone.
    const bool good = result >= 0 && call.Which() != SystemCall::Readdir;
    errno = good ? Spoiled : error;
    return result;
}

}  // namespace Faults
