// Makes one call of the module to the C library fail, or answer oddly, or cancels the thread or
// forks the process before it; counts them all, and spoils errno after each that succeeds.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <thread>

#include "faults/posix/Conditions.h"
#include "faults/posix/Memory.h"
#include "support/posix/SystemCallFaults.h"

namespace Faults {

inline constexpr std::size_t CallKinds = static_cast<std::size_t>(SystemCalls::SystemCall::Any);

struct Fault {
    enum class Kind { None, Failure, OddSuccess, ModuleMemory, LibraryMemory, Cancellation, Fork };

    Kind kind = Kind::None;
    SystemCalls::SystemCall which = SystemCalls::SystemCall::Any;
    // Which call or allocation, counted from 1: a cancellation's of all calls, and a fork's of
    // those where a thread may be cancelled.
    unsigned int first = 0;
    int error = 0;
    bool lasting = false;  // whether all further ones fail too
    bool cold = false;     // in the first run of a process
    Conditions conditions = {};
};

std::string TextOf(const Fault& fault);

// What there is besides failing: less than was asked for, nothing, no address.
bool HasOddSuccess(SystemCalls::SystemCall which) noexcept;

// One for the process. All calls are counted from Begin to End.
class Injector {
public:
    Injector();

    void Begin(const Fault& fault) noexcept;
    // The scene is played by the calling thread, and not by that which has begun.
    void FollowThisThread() noexcept { thread_ = std::this_thread::get_id(); }
    void End() noexcept;

    bool HasStruck() const noexcept;
    unsigned int CallsOf(SystemCalls::SystemCall which) const noexcept {
        return counts_[static_cast<std::size_t>(which)];
    }
    unsigned int AllCalls() const noexcept { return allCalls_; }
    // Those of the scene's thread at which it may be cancelled.
    unsigned int Points() const noexcept { return points_; }
    // Whether a descriptor was made that programs would inherit.
    bool WasInheritable() const noexcept { return wasInheritable_; }
    // Whether something was written into a socket that a standard stream's number leads to.
    bool WasWrittenIntoSocket() const noexcept { return wasWrittenIntoSocket_; }
    // The lowest number that was above all descriptors of the module.
    int DescriptorsEnd() const noexcept { return descriptorsEnd_; }
    // How the forked process ended, as waitpid tells it; 0 if there was none.
    int EndOfFork() const noexcept { return endOfFork_; }

private:
    SystemCalls::Word Act(SystemCalls::Call& call);
    bool Strikes(SystemCalls::SystemCall which) noexcept;
    void StrikeThread(SystemCalls::SystemCall which);
    void Fork();
    void CheckDescriptor(const SystemCalls::Call& call, SystemCalls::Word result) noexcept;

    bool counting_ = false;
    Fault fault_;
    std::thread::id thread_;
    unsigned int allCalls_ = 0;
    unsigned int points_ = 0;
    int descriptorsEnd_ = 0;
    int endOfFork_ = 0;
    bool wasWrittenIntoSocket_ = false;
    unsigned int counts_[CallKinds] = {};
    unsigned int strikes_ = 0;
    bool wasInheritable_ = false;
    SystemCalls::HookedCall hook_;
};

}  // namespace Faults
