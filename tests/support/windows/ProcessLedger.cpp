#include <windows.h>
// Behind it.
#include <winternl.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <vector>

#include "support/ProcessLedger.h"

namespace Support {

namespace {

// What the system lists of each handle.
struct ListedHandle {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creator;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};

struct HandleList {
    ULONG_PTR count;
    ULONG_PTR reserved;
    ListedHandle first[1];
};

// The compiler's headers have no name for it.
SYSTEM_INFORMATION_CLASS HandlesOfAllProcesses() {
    constexpr int number = 64;
    SYSTEM_INFORMATION_CLASS what = SystemBasicInformation;
    std::memcpy(&what, &number, sizeof what);
    return what;
}

std::vector<char> ListAllHandles() {
    for (ULONG size = 1 << 18; size < (1U << 28); size *= 2) {
        std::vector<char> list(size);
        if (::NtQuerySystemInformation(HandlesOfAllProcesses(), list.data(), size, nullptr) == 0)
            return list;
    }
    throw std::runtime_error("the system lists no handles");
}

std::vector<ListedHandle> ListOwnHandles() {
    const std::vector<char> bytes = ListAllHandles();
    const auto* const list = reinterpret_cast<const HandleList*>(bytes.data());
    std::vector<ListedHandle> own;
    std::copy_if(
        list->first, list->first + list->count, std::back_inserter(own),
        [](const ListedHandle& entry) { return entry.process == ::GetCurrentProcessId(); });
    return own;
}

// The types' numbers are those of the running system: it tells them of handles whose types are
// known.
USHORT TypeOf(HANDLE handle) {
    for (const ListedHandle& entry : ListOwnHandles())
        if (entry.handle == reinterpret_cast<ULONG_PTR>(handle)) return entry.type;
    throw std::runtime_error("the system does not list a handle");
}

USHORT TypeOfFiles() {
    const HANDLE file = ::CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const USHORT type = TypeOf(file);
    ::CloseHandle(file);
    return type;
}

USHORT TypeOfRegistryKeys() {
    HKEY key = nullptr;
    ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"Software", 0, KEY_READ, &key);
    const USHORT type = TypeOf(key);
    ::RegCloseKey(key);
    return type;
}

// Threads and what they wait for are not looked at: the compiler's library keeps some to use again.
struct Counts {
    long files = 0;  // and sockets
    long registryKeys = 0;
};

Counts CountHandles() {
    static const USHORT file = TypeOfFiles();
    static const USHORT registryKey = TypeOfRegistryKeys();
    const std::vector<ListedHandle> handles = ListOwnHandles();
    const auto count = [&handles](USHORT type) {
        return static_cast<long>(
            std::count_if(handles.begin(), handles.end(),
                          [type](const ListedHandle& entry) { return entry.type == type; }));
    };
    return {count(file), count(registryKey)};
}

Counts noted;

}  // namespace

void NoteProcess() {
    noted = CountHandles();
}

std::string DifferenceOfProcess() {
    const Counts now = CountHandles();
    std::string text;
    if (now.files != noted.files)
        text += " " + std::to_string(now.files - noted.files) + " files or sockets";
    if (now.registryKeys != noted.registryKeys)
        text += " " + std::to_string(now.registryKeys - noted.registryKeys) + " registry keys";
    return text;
}

}  // namespace Support
