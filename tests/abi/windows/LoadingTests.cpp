// Loading and unloading the module changes nothing in the process, used or not.
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

void LoadUseAndUnload() {
    const HMODULE client = LoadLibraryA(VELSOCK_CLIENT);
    ASSERT_NE(client, nullptr) << GetLastError();
    const FARPROC function = GetProcAddress(client, "UseModule");
    ASSERT_NE(function, nullptr) << GetLastError();
    ASSERT_TRUE(reinterpret_cast<bool (*)()>(reinterpret_cast<void*>(function))());
    ASSERT_NE(FreeLibrary(client), 0);
    ASSERT_EQ(GetModuleHandleA(VELSOCK_MODULE), nullptr) << "it stayed loaded";
}

// The first time may leave something behind in the system's own libraries, which come along.
void ExpectNothingLeftAfterAThousand(void (*round)()) {
    round();
    const int handles = Handles();
    const int threads = Threads();
    ASSERT_GT(handles, 0);
    ASSERT_GT(threads, 0);
    for (int time = 0; time < 1000 && !testing::Test::HasFatalFailure(); ++time)
        round();
    EXPECT_EQ(Handles(), handles);
    EXPECT_EQ(Threads(), threads);
}

}  // namespace

TEST(Loading, AThousandTimesLeavesNoHandleAndNoThread) {
    ExpectNothingLeftAfterAThousand(LoadAndUnload);
}

// Wine's ws2_32 keeps its data of the thread when it is unloaded, and fails because of it
// when it comes back. So it stays.
TEST(Loading, AThousandTimesWithUseInBetweenLeavesNoHandleAndNoThread) {
    ASSERT_NE(LoadLibraryA("ws2_32.dll"), nullptr) << GetLastError();
    ExpectNothingLeftAfterAThousand(LoadUseAndUnload);
}
