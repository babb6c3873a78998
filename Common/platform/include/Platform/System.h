// The seam to the few other things that the library needs from the operating system.
//
// Wide strings are UTF-16 in 16-bit units. Returned ones have no terminator. All operations may be
// called from any thread at any time; those that return containers may throw std::bad_alloc.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace System {

using WideUnits = std::vector<unsigned short>;

// Suspends the calling thread; 0 only yields to other threads.
void Sleep(unsigned long milliseconds);

// Returns the local host's name; empty if the system does not report it.
WideUnits ComputerName();

// A version of Windows; on other systems, the one that they stand for.
struct VersionRecord {
    unsigned int size;  // of the record, in bytes; the caller sets it
    unsigned int majorVersion;
    unsigned int minorVersion;
    unsigned int buildNumber;
    unsigned int platform;
    unsigned short servicePack[128];
};
static_assert(sizeof(VersionRecord) == 276);

// Fills the record. Returns false if the system refuses, as for a record of another size.
bool GetVersionExW(VersionRecord* version);

// Returns the system's text for one of its error numbers, Winsock's included; never empty.
WideUnits ErrorDescription(unsigned int error);

// Convert between the system's code page and UTF-16. What cannot be converted becomes a replacement
// character.
WideUnits WideFromCodePage(const char* text, std::size_t length);
std::string CodePageFromWide(const unsigned short* units, std::size_t count);

// The error numbers that a caller may still read: the thread's last Winsock error and the system's
// own.
struct ErrorNumbers {
    int winsock;
    int system;
};
ErrorNumbers SaveErrorNumbers() noexcept;
void RestoreErrorNumbers(ErrorNumbers numbers) noexcept;

// On systems where threads can be cancelled: defer a request to cancel the calling thread between
// the two calls. A cancellation must not pass through code that catches all exceptions.
int HoldCancellation() noexcept;
void ReleaseCancellation(int held) noexcept;

// A lock for static storage, to be used with std::lock_guard. All zeros is a free lock, and locks
// are never destroyed, so that one can be used before the first dynamic initializer and after the
// last destructor of the process; std::mutex promises only the former, and on Windows keeps
// neither. Not recursive; acquiring does not allocate.
class Lock {
public:
    constexpr Lock() noexcept = default;
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

    void lock() noexcept;
    void unlock() noexcept;

    // The system's own lock.
    alignas(8) unsigned char storage[48] = {};
};

// A file that records are appended to. A write is one system call, unless the file takes only a
// part at once, so that the records of several writers do not mix. Nothing here raises a signal.
using LogFile = long long;
inline constexpr LogFile NoLogFile = -1;

// Returns the process's standard error, which is never closed.
LogFile StandardError() noexcept;

// Opens the file for appending, or creates it with access for its owner only. The path is UTF-8.
// Returns NoLogFile on failure, with the system's error number in error.
//
// Never blocks: a pipe without a reader is a failure. Never returns the descriptor of a standard
// stream, even if that is closed.
LogFile OpenLogFile(const char* path, unsigned int& error) noexcept;

// Returns how many of the bytes were written: all, none, or those before a failure.
std::size_t WriteLogFile(LogFile file, const char* bytes, std::size_t count) noexcept;

// Whether the file ends with anything but a line feed, as far as the system can tell.
bool EndsWithinLine(LogFile file) noexcept;
void CloseLogFile(LogFile file) noexcept;

}  // namespace System
