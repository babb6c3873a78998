// The import table of the built module: by which of the system's functions it is bound, and others
// in their place while a test runs.
#pragma once

#include <string>
#include <vector>

namespace Module {

// What the module is to call in place of a function of a system library.
struct StandIn {
    const char* library;  // "ws2_32.dll"
    const char* name;
    void* function;
};

// From its construction to its destruction the module calls the stand-ins; nobody else does, the
// test program included. A stand-in for what the module does not import fails the test. No thread
// may be inside the module at either time.
class PatchedImports {
public:
    explicit PatchedImports(const std::vector<StandIn>& standIns);
    ~PatchedImports();
    PatchedImports(const PatchedImports&) = delete;
    PatchedImports& operator=(const PatchedImports&) = delete;

private:
    struct Patch {
        void** entry;
        void* original;
    };
    void Replace(const StandIn& standIn);

    std::vector<Patch> patches_;
};

// The functions of the library for which the module has no stand-in at the moment.
std::vector<std::string> ImportsFromSystem(const char* library);

}  // namespace Module
