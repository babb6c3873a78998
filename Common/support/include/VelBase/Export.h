// Marks what the shared module exports.
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
