// Loading and unloading the module changes nothing in the process.
#include <windows.h>
// Behind it.
#include <gtest/gtest.h>
#include <tlhelp32.h>

namespace {

// Handles are multiples of 4 and given out from below. The system's own count is not to be had
// everywhere.
int Handles() {
    constexpr ULONG_PTR highest = 0x8000;
    int count = 0;
    for (ULONG_PTR number = 4; number < highest; number += 4) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags) != 0) ++count;
    }
    return count;
}

int Threads() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof entry;
    int count = 0;
    for (BOOL more = Thread32First(snapshot, &entry); more != 0;
         more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++count;
    }
    CloseHandle(snapshot);
    return count;
}

void LoadAndUnload() {
    const HMODULE module = LoadLibraryA(VELSOCK_MODULE);
    ASSERT_NE(module, nullptr) << GetLastError();
    ASSERT_EQ(GetModuleHandleA(VELSOCK_MODULE), module);
    ASSERT_NE(FreeLibrary(module), 0);
    ASSERT_EQ(GetModuleHandleA(VELSOCK_MODULE), nullptr) << "it stayed loaded";
}

}  // namespace

// The first time may leave something behind in the system's own libraries, which come along.
TEST(Loading, AThousandTimesLeavesNoHandleAndNoThread) {
    LoadAndUnload();
    const int handles = Handles();
    const int threads = Threads();
    ASSERT_GT(handles, 0);
    ASSERT_GT(threads, 0);
    for (int time = 0; time < 1000; ++time)
        LoadAndUnload();
    EXPECT_EQ(Handles(), handles);
    EXPECT_EQ(Threads(), threads);
}
