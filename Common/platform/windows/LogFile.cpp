#include "Platform/System.h"

#include <windows.h>

#include <algorithm>

namespace {

// The longest path that the system accepts.
constexpr int LongestPath = 32768;

constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr char LineFeed = '\n';

// Grants the user that the process runs as full access, and nobody else any, with nothing inherited
// from the folder. Needs no heap memory, so that a log can be opened without any.
class OwnerOnly {
public:
    // Returns false with the reason in the thread's last error.
    bool Prepare() noexcept {
        constexpr SECURITY_DESCRIPTOR_CONTROL alone = SE_DACL_PROTECTED;
        return ReadUser() && ::InitializeAcl(&access_.list, sizeof access_, ACL_REVISION) &&
               ::AddAccessAllowedAce(&access_.list, ACL_REVISION, FILE_ALL_ACCESS,
                                     user_.token.User.Sid) &&
               ::InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
               ::SetSecurityDescriptorDacl(&descriptor_, TRUE, &access_.list, FALSE) &&
               ::SetSecurityDescriptorControl(&descriptor_, alone, alone);
    }
    void* Descriptor() noexcept { return &descriptor_; }

private:
    bool ReadUser() noexcept {
        HANDLE token = nullptr;
        if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token)) return false;
        DWORD length = 0;
        const BOOL read = ::GetTokenInformation(token, TokenUser, &user_, sizeof user_, &length);
        const DWORD error = ::GetLastError();
        ::CloseHandle(token);
        ::SetLastError(error);
        return read != FALSE;
    }

    union {
        TOKEN_USER token;
        unsigned char room[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
    } user_ = {};
    struct {
        ACL list;
        unsigned char room[sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE];
    } access_ = {};
    SECURITY_DESCRIPTOR descriptor_ = {};
};

HANDLE HandleOf(System::LogFile file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}
System::LogFile FileOf(HANDLE handle) noexcept {
    return reinterpret_cast<System::LogFile>(handle);
}

HANDLE OpenForAppending(const wchar_t* path, void* security) noexcept {
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, security, FALSE};
    return ::CreateFileW(path, FILE_APPEND_DATA, ShareAll, &attributes, OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Returns INVALID_HANDLE_VALUE on failure, with the reason in the thread's last error.
HANDLE OpenOwnersFile(const char* path) noexcept {
    wchar_t wide[LongestPath];
    OwnerOnly security;
    const bool ready =
        ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, wide, LongestPath) != 0 &&
        security.Prepare();
    return ready ? OpenForAppending(wide, security.Descriptor()) : INVALID_HANDLE_VALUE;
}

// Returns a line feed if it cannot be read.
char LastByte(HANDLE file, long long size) noexcept {
    LARGE_INTEGER place = {};
    place.QuadPart = size - 1;
    char byte = LineFeed;
    DWORD count = 0;
    if (::SetFilePointerEx(file, place, nullptr, FILE_BEGIN) == FALSE) return LineFeed;
    const BOOL read = ::ReadFile(file, &byte, 1, &count, nullptr);
    return read != FALSE && count == 1 ? byte : LineFeed;
}

}  // namespace

static_assert(sizeof(System::LogFile) == sizeof(HANDLE));

System::LogFile System::StandardError() noexcept {
    return FileOf(::GetStdHandle(STD_ERROR_HANDLE));
}

System::LogFile System::OpenLogFile(const char* path, unsigned int& error) noexcept {
    const LogFile file = FileOf(OpenOwnersFile(path));
    error = file == NoLogFile ? ::GetLastError() : 0;
    return file;
}

std::size_t System::WriteLogFile(LogFile file, const char* bytes, std::size_t count) noexcept {
    constexpr std::size_t most = 1U << 30U;
    std::size_t taken = 0;
    while (taken < count) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(count - taken, most));
        const BOOL whole = ::WriteFile(HandleOf(file), bytes + taken, part, &written, nullptr);
        taken += written;
        if (whole == FALSE || written == 0) break;
    }
    return taken;
}

// Opens the file again by its handle, which itself can only append; the path may name another file
// by now.
bool System::EndsWithinLine(LogFile file) noexcept {
    LARGE_INTEGER size = {};
    const HANDLE handle = HandleOf(file);
    if (::GetFileSizeEx(handle, &size) == FALSE || size.QuadPart == 0) return false;
    const HANDLE reader = ::ReOpenFile(handle, GENERIC_READ, ShareAll, 0);
    if (reader == INVALID_HANDLE_VALUE) return false;
    const bool within = LastByte(reader, size.QuadPart) != LineFeed;
    ::CloseHandle(reader);
    return within;
}

void System::CloseLogFile(LogFile file) noexcept {
    if (file != NoLogFile && file != StandardError()) ::CloseHandle(HandleOf(file));
}
