#include "System.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace VelLogging::System {

unsigned long long ProcessNumber() noexcept {
    return static_cast<unsigned long long>(::getpid());
}

unsigned long long ThreadNumber() noexcept {
    return static_cast<unsigned long long>(::syscall(SYS_gettid));
}

std::string ProgramName() {
    return ::program_invocation_short_name;
}

std::string Environment(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool HasDebugger() noexcept {
    return false;
}

void WriteToDebugger(const std::string&) {}

}  // namespace VelLogging::System
