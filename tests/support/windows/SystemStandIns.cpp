#include <windows.h>
// Behind it.
#include <Platform/System.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "StandIns.h"

namespace Module {

namespace {

void WINAPI Sleep(DWORD milliseconds) {
    System::Sleep(milliseconds);
}

BOOL WINAPI GetComputerName(LPWSTR place, LPDWORD room) {
    const System::WideUnits name = System::ComputerName();
    if (name.size() >= *room) return FALSE;
    *std::copy(name.begin(), name.end(), place) = L'\0';
    *room = static_cast<DWORD>(name.size());
    return TRUE;
}

BOOL WINAPI GetVersion(LPOSVERSIONINFOW version) {
    void* const record = version;
    return System::GetVersionExW(static_cast<System::VersionRecord*>(record)) ? TRUE : FALSE;
}

// The text in memory that LocalFree takes, with a line break at the end, as the system has it.
DWORD WINAPI FormatMessage(DWORD flags, LPCVOID, DWORD error, DWORD language, LPWSTR place, DWORD,
                           va_list*) {
    EXPECT_EQ(flags,
              static_cast<DWORD>(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                                 FORMAT_MESSAGE_IGNORE_INSERTS));
    EXPECT_EQ(language, 0U);
    const System::WideUnits units = System::ErrorDescription(error);
    const std::wstring text = std::wstring(units.begin(), units.end()) + L"\r\n";
    auto* const memory =
        static_cast<wchar_t*>(::LocalAlloc(LPTR, (text.size() + 1) * sizeof(wchar_t)));
    std::copy(text.begin(), text.end(), memory);
    *static_cast<wchar_t**>(static_cast<void*>(place)) = memory;
    return static_cast<DWORD>(text.size());
}

template <class Function>
StandIn OfSystem(const char* name, Function* function) {
    return {"kernel32.dll", name, reinterpret_cast<void*>(function)};
}

}  // namespace

std::vector<StandIn> SystemStandIns() {
    return {
        OfSystem("Sleep", Sleep),
        OfSystem("GetComputerNameW", GetComputerName),
        OfSystem("GetVersionExW", GetVersion),
        OfSystem("FormatMessageW", FormatMessage),
    };
}

}  // namespace Module
