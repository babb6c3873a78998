#include "System.h"

#include <io.h>
#include <windows.h>

#include <cerrno>
#include <iterator>
#include <utility>

namespace VelLogging::System {

namespace {

std::wstring WideOf(std::string_view text) {
    const int size = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    const int units = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(units));
    return wide;
}

std::string Utf8Of(std::wstring_view wide) {
    const int size = static_cast<int>(wide.size());
    std::string text(wide.size() * 3, '\0');
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(),
                                            static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(bytes));
    return text;
}

HANDLE HandleOf(File file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

File FileOf(HANDLE handle) noexcept {
    return reinterpret_cast<File>(handle);
}

// Others may read the file, move it and remove it meanwhile.
HANDLE Open(const std::string& path, DWORD access, DWORD disposition) {
    constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    return ::CreateFileW(WideOf(path).c_str(), access, Sharing, nullptr, disposition,
                         FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
}

bool AreSame(HANDLE one, HANDLE other) noexcept {
    BY_HANDLE_FILE_INFORMATION ours = {};
    BY_HANDLE_FILE_INFORMATION there = {};
    return ::GetFileInformationByHandle(one, &ours) != 0 &&
           ::GetFileInformationByHandle(other, &there) != 0 &&
           ours.dwVolumeSerialNumber == there.dwVolumeSerialNumber &&
           ours.nFileIndexHigh == there.nFileIndexHigh && ours.nFileIndexLow == there.nFileIndexLow;
}

}  // namespace

unsigned long long ProcessNumber() noexcept {
    return ::GetCurrentProcessId();
}

unsigned long long ThreadNumber() noexcept {
    return ::GetCurrentThreadId();
}

std::string ProgramName() {
    wchar_t path[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring_view whole(path, length);
    const std::size_t folder = whole.find_last_of(L'\\');
    return Utf8Of(folder == std::wstring_view::npos ? whole : whole.substr(folder + 1));
}

std::string Environment(const char* name) {
    const std::wstring wideName = WideOf(name);
    std::wstring value(::GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
    value.resize(::GetEnvironmentVariableW(wideName.c_str(), value.data(),
                                           static_cast<DWORD>(value.size())));
    return Utf8Of(value);
}

File StandardError() noexcept {
    return FileOf(::GetStdHandle(STD_ERROR_HANDLE));
}

File OpenForAppending(const std::string& path, std::string& reason) {
    const HANDLE handle =
        Open(path, FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE, OPEN_ALWAYS);
    if (handle != INVALID_HANDLE_VALUE) return FileOf(handle);
    reason = "error " + std::to_string(::GetLastError());
    return NoFile;
}

std::size_t Write(File file, std::string_view bytes) noexcept {
    DWORD written = 0;
    if (file == NoFile || ::WriteFile(HandleOf(file), bytes.data(),
                                      static_cast<DWORD>(bytes.size()), &written, nullptr) == 0)
        return 0;
    return written;
}

void Close(File file) noexcept {
    if (file != NoFile) ::CloseHandle(HandleOf(file));
}

unsigned long long SizeOf(File file) noexcept {
    LARGE_INTEGER size = {};
    if (file == NoFile || ::GetFileSizeEx(HandleOf(file), &size) == 0) return 0;
    return static_cast<unsigned long long>(size.QuadPart);
}

bool EndsWithinLine(File file) noexcept {
    const unsigned long long size = SizeOf(file);
    if (size == 0) return false;
    constexpr DWORD Sharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE reader = ::ReOpenFile(HandleOf(file), GENERIC_READ, Sharing, 0);
    if (reader == INVALID_HANDLE_VALUE) return false;
    LARGE_INTEGER place = {};
    place.QuadPart = static_cast<LONGLONG>(size - 1);
    char last = '\n';
    DWORD count = 0;
    const bool isRead = ::SetFilePointerEx(reader, place, nullptr, FILE_BEGIN) != 0 &&
                        ::ReadFile(reader, &last, 1, &count, nullptr) != 0 && count == 1;
    ::CloseHandle(reader);
    return isRead && last != '\n';
}

bool IsAt(File file, const std::string& path) noexcept try {
    const HANDLE there = Open(path, FILE_READ_ATTRIBUTES, OPEN_EXISTING);
    if (there == INVALID_HANDLE_VALUE) return false;
    const bool isSame = AreSame(HandleOf(file), there);
    ::CloseHandle(there);
    return isSame;
} catch (...) {
    return true;  // no memory: nothing is known
}

void Rename(const std::string& from, const std::string& to) noexcept try {
    ::MoveFileExW(WideOf(from).c_str(), WideOf(to).c_str(), MOVEFILE_REPLACE_EXISTING);
} catch (...) {
    return;  // no memory: the file stays where it is
}

void Remove(const std::string& path) noexcept try {
    ::DeleteFileW(WideOf(path).c_str());
} catch (...) {
    return;
}

bool WriteFromHandler(int descriptor, const char* bytes, std::size_t count) noexcept {
    const int error = errno;
    const bool isWhole =
        ::_write(descriptor, bytes, static_cast<unsigned int>(count)) == static_cast<int>(count);
    errno = error;
    return isWhole;
}

bool HasDaemons() noexcept {
    return false;
}

const char* UsualSyslogPath() noexcept {
    return "";
}

const char* UsualJournalPath() noexcept {
    return "";
}

std::string SyslogTime(long long) {
    return {};
}

File OpenDatagramSocket() noexcept {
    return NoFile;
}

bool SendDatagram(File, const std::string&, std::string_view) noexcept {
    return false;
}

bool SendToJournal(File, const std::string&, std::string_view) noexcept {
    return false;
}

bool HasDebugger() noexcept {
    return true;
}

void WriteToDebugger(const std::string& line) {
    ::OutputDebugStringW(WideOf(line).c_str());
}

}  // namespace VelLogging::System
