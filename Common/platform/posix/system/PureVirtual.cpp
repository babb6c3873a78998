// What the slots of pure virtual functions lead to.
//
// The C++ library has such a function too, which prints a line before it ends the process. With one
// of the module's own the loader has no symbol to look up for these slots, of which there are well
// over a hundred.

// NOLINTNEXTLINE(bugprone-reserved-identifier): compilers ask for it by this name.
extern "C" [[noreturn, gnu::used, gnu::visibility("hidden")]] void __cxa_pure_virtual() {
    __builtin_trap();
}
