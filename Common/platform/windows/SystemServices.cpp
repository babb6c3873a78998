#include "Platform/System.h"
#include "WideTexts.h"

#include <winsock2.h>
#include <windows.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <memory>
#include <new>
#include <string>

namespace {

struct LocalMemory {
    void operator()(wchar_t* text) const noexcept { ::LocalFree(text); }
};
using SystemOwnedText = std::unique_ptr<wchar_t, LocalMemory>;

// Returns the system's text for the number, which ends with a line break; null if there is none.
SystemOwnedText SystemDescription(unsigned int error) {
    constexpr DWORD flags =
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;
    wchar_t* text = nullptr;
    auto* const place = static_cast<wchar_t*>(static_cast<void*>(&text));
    ::FormatMessageW(flags, nullptr, error, 0, place, 0, nullptr);
    return SystemOwnedText(text);
}

std::wstring WithoutTrailingSpace(std::wstring text) {
    text.erase(text.find_last_not_of(L" \r\n") + 1);
    return text;
}

// The system's type is int; a longer string could not be converted in one call.
int LengthOf(std::size_t length) {
    if (length > INT_MAX) throw std::bad_alloc();
    return static_cast<int>(length);
}

}  // namespace

void System::Sleep(unsigned long milliseconds) {
    ::Sleep(milliseconds);
}

System::WideUnits System::ComputerName() {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    return ::GetComputerNameW(name, &length) != 0 ? Windows::OwnText(name, length) : WideUnits{};
}

static_assert(sizeof(System::VersionRecord) == sizeof(OSVERSIONINFOW));
static_assert(offsetof(System::VersionRecord, size) ==
              offsetof(OSVERSIONINFOW, dwOSVersionInfoSize));
static_assert(offsetof(System::VersionRecord, majorVersion) ==
              offsetof(OSVERSIONINFOW, dwMajorVersion));
static_assert(offsetof(System::VersionRecord, minorVersion) ==
              offsetof(OSVERSIONINFOW, dwMinorVersion));
static_assert(offsetof(System::VersionRecord, buildNumber) ==
              offsetof(OSVERSIONINFOW, dwBuildNumber));
static_assert(offsetof(System::VersionRecord, platform) == offsetof(OSVERSIONINFOW, dwPlatformId));
static_assert(offsetof(System::VersionRecord, servicePack) ==
              offsetof(OSVERSIONINFOW, szCSDVersion));

bool System::GetVersionExW(VersionRecord* version) {
    return ::GetVersionExW(static_cast<OSVERSIONINFOW*>(static_cast<void*>(version))) != 0;
}

System::WideUnits System::ErrorDescription(unsigned int error) {
    const SystemOwnedText description = SystemDescription(error);
    std::wstring text = WithoutTrailingSpace(description ? description.get() : L"");
    if (text.empty()) text = L"Unknown error " + std::to_wstring(error);
    return Windows::OwnText(text.data(), text.size());
}

System::WideUnits System::WideFromCodePage(const char* text, std::size_t length) {
    const int bytes = LengthOf(length);
    const int count = ::MultiByteToWideChar(CP_ACP, 0, text, bytes, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(count), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, text, bytes, wide.data(), count);
    return Windows::OwnText(wide.data(), wide.size());
}

std::string System::CodePageFromWide(const unsigned short* units, std::size_t count) {
    const std::wstring wide = Windows::SystemText(units, count);
    const int length = LengthOf(count);
    const int bytes =
        ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, nullptr, 0, nullptr, nullptr);
    std::string text(static_cast<std::size_t>(bytes), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, wide.data(), length, text.data(), bytes, nullptr, nullptr);
    return text;
}

// Windows has no cancellation of threads that would unwind their stacks.
int System::HoldCancellation() noexcept {
    return 0;
}

void System::ReleaseCancellation(int) noexcept {}

System::ErrorNumbers System::SaveErrorNumbers() noexcept {
    return {.winsock = ::WSAGetLastError(), .system = errno};
}

void System::RestoreErrorNumbers(ErrorNumbers numbers) noexcept {
    ::WSASetLastError(numbers.winsock);
    errno = numbers.system;
}
