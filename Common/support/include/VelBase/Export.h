// Marks what the shared module exports, and what points into the object that it was asked of.
//
// VELSOCK_BUILD is defined while the module itself is compiled, VELSOCK_STATIC where the sources
// are linked straight into a program (the unit tests).
#pragma once

#if defined(VELSOCK_STATIC)
#define VELSOCK_EXPORT
#elif !defined(_WIN32)
#define VELSOCK_EXPORT __attribute__((visibility("default")))
#elif defined(VELSOCK_BUILD)
#define VELSOCK_EXPORT __declspec(dllexport)
#else
#define VELSOCK_EXPORT __declspec(dllimport)
#endif

// After a member function: its result lives as long as the object, so that c_str() of a temporary
// is warned of. clang knows that; g++ warns of the attribute itself.
#if defined(__clang__)
#define VELSOCK_LIFETIMEBOUND [[clang::lifetimebound]]
#else
#define VELSOCK_LIFETIMEBOUND
#endif
