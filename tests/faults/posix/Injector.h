// Makes one call of the module to the C library fail, or answer oddly; counts them all, and spoils
// errno after each that succeeds.
#pragma once

#include <cstddef>
#include <string>

#include "faults/posix/Memory.h"
#include "support/posix/SystemCallFaults.h"

namespace Faults {

inline constexpr std::size_t CallKinds = static_cast<std::size_t>(SystemCalls::SystemCall::Any);

struct Fault {
    enum class Kind { None, Failure, OddSuccess, ModuleMemory, LibraryMemory };

    Kind kind = Kind::None;
    SystemCalls::SystemCall which = SystemCalls::SystemCall::Any;
    unsigned int first = 0;  // which call or allocation, counted from 1
    int error = 0;
    bool lasting = false;  // whether all further ones fail too
    bool cold = false;     // in the first run of a process
};

std::string TextOf(const Fault& fault);

// What there is besides failing: less than was asked for, nothing, no address.
bool HasOddSuccess(SystemCalls::SystemCall which) noexcept;

// One for the process. All calls are counted from Begin to End.
class Injector {
public:
    Injector();

    void Begin(const Fault& fault) noexcept;
    void End() noexcept;

    bool HasStruck() const noexcept;
    unsigned int CallsOf(SystemCalls::SystemCall which) const noexcept {
        return counts_[static_cast<std::size_t>(which)];
    }
    // Whether a descriptor was made that programs would inherit.
    bool WasInheritable() const noexcept { return wasInheritable_; }

private:
    SystemCalls::Word Act(SystemCalls::Call& call) noexcept;
    bool Strikes(SystemCalls::SystemCall which) noexcept;
    void CheckInheritance(const SystemCalls::Call& call, SystemCalls::Word result) noexcept;

    bool counting_ = false;
    Fault fault_;
    unsigned int counts_[CallKinds] = {};
    unsigned int strikes_ = 0;
    bool wasInheritable_ = false;
    SystemCalls::HookedCall hook_;
};

}  // namespace Faults
