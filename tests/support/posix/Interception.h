// The way of a call from the test program's own definition of a C library's function to the hooks
// and to the C library.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <type_traits>

#include "support/posix/SystemCallFaults.h"

namespace SystemCalls {

// A function's name as a template argument.
template <std::size_t Size>
struct Name {
    char text[Size];
    consteval Name(const char (&name)[Size]) { std::copy_n(name, Size, text); }
};

// The sanitizer's function of that name, or else the C library's.
void* FindReal(const char* name) noexcept;

// Whether the place lies in the code under test.
bool IsUnderTest(const void* caller) noexcept;

// Whether the calling thread runs a hook, or the real call for one.
bool IsPassing() noexcept;

// Whether any hook is open, which costs the calls of all other tests no more than this look.
bool AnyHooks() noexcept;

// Lets the hooks have the call, if one means it; makes it otherwise. The caller is a place in the
// calling code.
Word Offer(SystemCall which, const void* caller, const Arguments& arguments, const RealCall& real);

template <typename Type>
Word WordFrom(Type value) noexcept {
    if constexpr (std::is_pointer_v<Type>) {
        return reinterpret_cast<Word>(value);
    } else {
        return static_cast<Word>(value);
    }
}

template <typename Type>
Type FromWord(Word word) noexcept {
    if constexpr (std::is_pointer_v<Type>) {
        return reinterpret_cast<Type>(word);
    } else {
        return static_cast<Type>(word);
    }
}

template <Name name, typename Function>
Function* Real() noexcept {
    static constinit std::atomic<void*> found = nullptr;
    void* real = found.load(std::memory_order_relaxed);
    if (real == nullptr) found.store(real = FindReal(name.text), std::memory_order_relaxed);
    return reinterpret_cast<Function*>(real);
}

// Inlined, so that its return address is that of the function that it is the body of.
template <Name name, typename Function, typename... Parameters>
[[gnu::always_inline]] inline auto Intercept(SystemCall which, Parameters... parameters) {
    Function* const real = Real<name, Function>();
    using Result = decltype(real(parameters...));
    if (!AnyHooks()) return real(parameters...);
    const auto make = [&] { return WordFrom(real(parameters...)); };
    const void* const caller = __builtin_return_address(0);
    return FromWord<Result>(Offer(which, caller, {WordFrom(parameters)...}, RealCall(make)));
}

}  // namespace SystemCalls
