// What an instrumented source asks: is this mutant the one to live?
#pragma once

#include <optional>

namespace mutation {

extern int active;              // the mutant of this process; -1 for none
extern unsigned char* reached;  // one byte a mutant, set once its place has been run

inline bool IsChosen(int mutant) noexcept {
    __atomic_store_n(&reached[mutant], 1, __ATOMIC_RELAXED);  // orders nothing, hides no race
    return mutant == active;
}

// In functions that are constexpr: what is computed at compile time stays as it was written.
constexpr bool IsChosenAtRunTime(int mutant) noexcept {
    if (__builtin_is_constant_evaluated()) return false;
    return IsChosen(mutant);
}

}  // namespace mutation
