// What the sinks need of the system. Nothing here raises a signal or throws anything but
// std::bad_alloc.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace VelLogging::System {

// A file or a socket, as the system numbers it.
using File = long long;
inline constexpr File NoFile = -1;

unsigned long long ProcessNumber() noexcept;
// Of the calling thread.
unsigned long long ThreadNumber() noexcept;
std::string ProgramName();
// Of a variable; empty if there is none.
std::string Environment(const char* name);

File StandardError() noexcept;

// Opens a regular file or a device, no symbolic link, for appending, or creates it with access for
// its owner only. Returns NoFile on failure, with the reason.
File OpenForAppending(const std::string& path, std::string& reason);
// Returns how many bytes were written: all, none, or those before a failure.
std::size_t Write(File file, std::string_view bytes) noexcept;
void Close(File file) noexcept;
unsigned long long SizeOf(File file) noexcept;
bool EndsWithinLine(File file) noexcept;
// Whether the path leads to this file.
bool IsAt(File file, const std::string& path) noexcept;
void Rename(const std::string& from, const std::string& to) noexcept;
void Remove(const std::string& path) noexcept;

// For signal handlers: as Write to a descriptor of the C library, and the error number is kept.
bool WriteFromHandler(int descriptor, const char* bytes, std::size_t count) noexcept;

// The sockets of daemons.
bool HasDaemons() noexcept;
const char* UsualSyslogPath() noexcept;
const char* UsualJournalPath() noexcept;
// Local time as RFC 3164 shows it: "Nov 22 13:01:02".
std::string SyslogTime(long long secondsSince1970);
// NoFile on failure.
File OpenDatagramSocket() noexcept;
// Sends without waiting. Returns false if the datagram was not taken.
bool SendDatagram(File socket, const std::string& path, std::string_view bytes) noexcept;
// The same with what may be too long for a datagram, and then is sent as a file in memory.
bool SendToJournal(File socket, const std::string& path, std::string_view bytes) noexcept;

bool HasDebugger() noexcept;
void WriteToDebugger(const std::string& line);

}  // namespace VelLogging::System
