// The functions of the C library that the module calls and that can fail, each with the numbers
// that its manual documents. CheckImports.sh holds the table against what the module imports.
#pragma once

#include <span>

#include "support/posix/SystemCallFaults.h"

namespace Faults {

struct FailingFunction {
    const char* symbol;
    SystemCalls::SystemCall which;
    std::span<const int> errors;  // as Call::Fail takes them
};

std::span<const FailingFunction> FailingFunctions();

// The row of a call. Two symbols that are one function have one row each, with the same numbers.
const FailingFunction& RowOf(SystemCalls::SystemCall which);

// A number's symbol.
const char* SymbolOf(SystemCalls::SystemCall which, int error);

}  // namespace Faults
