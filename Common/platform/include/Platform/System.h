// The seam to the few other things that the library needs of the operating system.
//
// Wide texts are 16-bit UTF-16 units. Results are without a terminator. All operations may be
// called from any thread at any time; those that return containers may throw std::bad_alloc.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace System {

using WideUnits = std::vector<unsigned short>;

// Suspends the calling thread; 0 only gives way to other threads.
void Sleep(unsigned long milliseconds);

// The local computer's name; empty when the system does not tell it.
WideUnits ComputerName();

// A version of Windows, the release that a system stands for elsewhere included.
struct VersionRecord {
    unsigned int size;  // of the record, in bytes; the caller sets it
    unsigned int majorVersion;
    unsigned int minorVersion;
    unsigned int buildNumber;
    unsigned int platform;
    unsigned short servicePack[128];
};
static_assert(sizeof(VersionRecord) == 276);

// Fills the record; false when the system does not answer, as for a record of another size.
bool GetVersionExW(VersionRecord* version);

// The system's text for one of its error numbers, Winsock's included; never empty.
WideUnits ErrorDescription(unsigned int error);

// Between the system's code page and UTF-16. What cannot be converted becomes a replacement
// character.
WideUnits WideFromCodePage(const char* text, std::size_t length);
std::string CodePageFromWide(const unsigned short* units, std::size_t count);

// The error numbers that a caller may still want to read: the thread's last Winsock error and the
// system's own.
struct ErrorNumbers {
    int winsock;
    int system;
};
ErrorNumbers SaveErrorNumbers() noexcept;
void RestoreErrorNumbers(ErrorNumbers numbers) noexcept;

// Where a thread can be cancelled: makes a request to cancel the calling thread wait, from one to
// the other. A cancellation must not pass through code that catches whatever is thrown.
int HoldCancellation() noexcept;
void ReleaseCancellation(int held) noexcept;

// A lock for static storage. Zeros are a free lock and nothing ever ends one, so it can be used
// before the first dynamic initialiser and after the last destructor of the process. Not recursive;
// waiting for it allocates nothing.
struct Lock {
    alignas(8) unsigned char storage[48];
};
void AcquireLock(Lock& lock) noexcept;
void ReleaseLock(Lock& lock) noexcept;

// A file that records are appended to. Each write is one call of the system, as far as the file
// takes it at once, so that records of several writers do not mix. Nothing here raises a signal.
using LogFile = long long;
inline constexpr LogFile NoLogFile = -1;

// The process's standard error; never closed.
LogFile StandardError() noexcept;

// Opens the file for appending, or makes it, readable and writable by its owner only. The path is
// UTF-8. NoLogFile on failure, with the system's error number in error. Never waits: a pipe that
// nobody reads is a failure. The file's number is none of the standard streams', even if they are
// closed.
LogFile OpenLogFile(const char* path, unsigned int& error) noexcept;

// How many of the bytes the file has taken: all, none, or those before it failed.
std::size_t WriteLogFile(LogFile file, const char* bytes, std::size_t count) noexcept;

// Whether what the file holds ends with anything but a line feed, as far as the system tells.
bool EndsWithinLine(LogFile file) noexcept;
void CloseLogFile(LogFile file) noexcept;

}  // namespace System
