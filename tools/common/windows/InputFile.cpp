#include "InputFile.h"

#include <windows.h>

#include <algorithm>
#include <system_error>

#include "Failure.h"

namespace VelSockTools {

namespace {

[[noreturn]] void Fail(const std::string& path, DWORD error) {
    throw Failure(
        ExitCode::LocalFailure,
        "cannot read " + path + ": " + std::system_category().message(static_cast<int>(error)));
}

HANDLE HandleOf(std::intptr_t handle) noexcept {
    return reinterpret_cast<HANDLE>(handle);
}

// Whoever writes the file may also rename and delete it.
HANDLE Open(const std::string& path) noexcept {
    return ::CreateFileA(path.c_str(), GENERIC_READ,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                         OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

bool AreSame(HANDLE one, HANDLE other) noexcept {
    BY_HANDLE_FILE_INFORMATION first = {};
    BY_HANDLE_FILE_INFORMATION second = {};
    return ::GetFileInformationByHandle(one, &first) == 0 ||
           ::GetFileInformationByHandle(other, &second) == 0 ||
           (first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
            first.nFileIndexHigh == second.nFileIndexHigh &&
            first.nFileIndexLow == second.nFileIndexLow);
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : path_(path), handle_(reinterpret_cast<std::intptr_t>(Open(path))) {
    if (HandleOf(handle_) == INVALID_HANDLE_VALUE) Fail(path, ::GetLastError());
}

InputFile::~InputFile() {
    ::CloseHandle(HandleOf(handle_));
}

std::size_t InputFile::Read(char* buffer, std::size_t size) {
    constexpr std::size_t most = 1U << 30U;
    DWORD count = 0;
    if (::ReadFile(HandleOf(handle_), buffer, static_cast<DWORD>(std::min(size, most)), &count,
                   nullptr) == 0) {
        if (::GetLastError() == ERROR_BROKEN_PIPE) return 0;
        Fail(path_, ::GetLastError());
    }
    position_ += count;
    return count;
}

std::uint64_t InputFile::Size() const {
    LARGE_INTEGER size = {};
    if (::GetFileSizeEx(HandleOf(handle_), &size) == 0) return 0;
    return static_cast<std::uint64_t>(size.QuadPart);
}

bool InputFile::RestartIfTruncated() {
    if (::GetFileType(HandleOf(handle_)) != FILE_TYPE_DISK || Size() >= position_) return false;
    LARGE_INTEGER begin = {};
    if (::SetFilePointerEx(HandleOf(handle_), begin, nullptr, FILE_BEGIN) == 0)
        Fail(path_, ::GetLastError());
    position_ = 0;
    return true;
}

bool InputFile::IsReplaced() const {
    const HANDLE named = Open(path_);
    if (named == INVALID_HANDLE_VALUE) return false;
    const bool isReplaced = !AreSame(HandleOf(handle_), named);
    ::CloseHandle(named);
    return isReplaced;
}

}  // namespace VelSockTools
