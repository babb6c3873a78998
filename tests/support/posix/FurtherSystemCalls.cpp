// The rest of the C library's functions that the module calls and that can fail, for the program
// that makes each of them fail. See SystemCalls.cpp.
#include <dirent.h>
#include <pthread.h>
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <cstdio>

#include "support/posix/Interception.h"

using SystemCalls::Intercept;
using SystemCalls::SystemCall;

// Waiting

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left) {
    return Intercept<"clock_nanosleep", decltype(::clock_nanosleep)>(SystemCall::ClockNanosleep,
                                                                     clock, flags, time, left);
}

// Files

int closedir(DIR* folder) {
    return Intercept<"closedir", decltype(::closedir)>(SystemCall::Closedir, folder);
}

int fclose(std::FILE* file) {
    return Intercept<"fclose", decltype(::fclose)>(SystemCall::Fclose, file);
}

ssize_t getline(char** line, size_t* room, std::FILE* file) {
    return Intercept<"getline", decltype(::getline)>(SystemCall::Getline, line, room, file);
}

off_t lseek(int descriptor, off_t offset, int whence) noexcept {
    return Intercept<"lseek", decltype(::lseek)>(SystemCall::Lseek, descriptor, offset, whence);
}

ssize_t pread(int descriptor, void* bytes, size_t room, off_t offset) {
    return Intercept<"pread", decltype(::pread)>(SystemCall::Pread, descriptor, bytes, room,
                                                 offset);
}

int getrlimit(__rlimit_resource_t which, rlimit* limit) noexcept {
    return Intercept<"getrlimit", decltype(::getrlimit)>(SystemCall::Getrlimit, which, limit);
}

// Threads, processes and signals

int pthread_key_create(pthread_key_t* key, void (*end)(void*)) noexcept {
    return Intercept<"pthread_key_create", decltype(::pthread_key_create)>(
        SystemCall::PthreadKeyCreate, key, end);
}

int pthread_setspecific(pthread_key_t key, const void* value) noexcept {
    return Intercept<"pthread_setspecific", decltype(::pthread_setspecific)>(
        SystemCall::PthreadSetspecific, key, value);
}

// What pthread_atfork, which is linked into the module, calls.
extern "C" int __register_atfork(void (*prepare)(), void (*parent)(), void (*child)(),
                                 void* module) {
    return Intercept<"__register_atfork", decltype(__register_atfork)>(
        SystemCall::RegisterAtfork, prepare, parent, child, module);
}
