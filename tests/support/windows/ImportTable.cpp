#include <windows.h>
// Behind it.
#include "ImportTable.h"

#include <gtest/gtest.h>

namespace Module {

namespace {

// An entry of the table, and the function's name beside it.
struct Import {
    std::string name;
    void** entry;
};

char* Image() {
    return reinterpret_cast<char*>(::GetModuleHandleA(VELSOCK_MODULE));
}

template <class Structure>
Structure* InImage(ULONGLONG offset) {
    return reinterpret_cast<Structure*>(Image() + offset);
}

const IMAGE_IMPORT_DESCRIPTOR* FirstLibrary() {
    const auto* const start = InImage<IMAGE_DOS_HEADER>(0);
    const auto* const headers = InImage<IMAGE_NT_HEADERS>(static_cast<ULONGLONG>(start->e_lfanew));
    const auto& directories = headers->OptionalHeader.DataDirectory;
    return InImage<IMAGE_IMPORT_DESCRIPTOR>(
        directories[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
}

std::string NameOf(const IMAGE_THUNK_DATA& import) {
    if (IMAGE_SNAP_BY_ORDINAL(import.u1.Ordinal))
        return '#' + std::to_string(IMAGE_ORDINAL(import.u1.Ordinal));
    const auto* const named = InImage<IMAGE_IMPORT_BY_NAME>(import.u1.AddressOfData);
    return static_cast<const char*>(named->Name);
}

void AddImports(std::vector<Import>& imports, const IMAGE_IMPORT_DESCRIPTOR& library) {
    const auto* name = InImage<IMAGE_THUNK_DATA>(library.OriginalFirstThunk);
    auto* entry = InImage<void*>(library.FirstThunk);
    for (; name->u1.Ordinal != 0; ++name, ++entry)
        imports.push_back({NameOf(*name), entry});
}

std::vector<Import> ImportsOf(const char* name) {
    std::vector<Import> imports;
    for (const auto* library = FirstLibrary(); library->Name != 0; ++library)
        if (::lstrcmpiA(InImage<char>(library->Name), name) == 0) AddImports(imports, *library);
    return imports;
}

// What the system binds such an import to. One by number has no name here, but the same function.
void* SystemFunction(const char* library, const char* name) {
    const FARPROC function = ::GetProcAddress(::GetModuleHandleA(library), name);
    return reinterpret_cast<void*>(function);
}

// Whether it belongs to the test program itself.
bool IsInProgram(const void* function) {
    constexpr DWORD byAddress =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    HMODULE owner = nullptr;
    ::GetModuleHandleExA(byAddress, static_cast<const char*>(function), &owner);
    return owner == ::GetModuleHandleA(nullptr);
}

void Write(void** entry, void* function) {
    DWORD protection = 0;
    ASSERT_TRUE(::VirtualProtect(entry, sizeof *entry, PAGE_READWRITE, &protection));
    *entry = function;
    ASSERT_TRUE(::VirtualProtect(entry, sizeof *entry, protection, &protection));
}

}  // namespace

PatchedImports::PatchedImports(const std::vector<StandIn>& standIns) {
    for (const StandIn& standIn : standIns)
        Replace(standIn);
}

PatchedImports::~PatchedImports() {
    for (const Patch& patch : patches_)
        Write(patch.entry, patch.original);
}

void PatchedImports::Replace(const StandIn& standIn) {
    void* const original = SystemFunction(standIn.library, standIn.name);
    const std::size_t before = patches_.size();
    for (const Import& import : ImportsOf(standIn.library)) {
        if (*import.entry != original) continue;
        patches_.push_back({import.entry, original});
        Write(import.entry, standIn.function);
    }
    EXPECT_EQ(patches_.size(), before + 1)
        << standIn.name << " is imported another number of times";
}

std::vector<std::string> ImportsFromSystem(const char* library) {
    std::vector<std::string> names;
    for (const Import& import : ImportsOf(library))
        if (!IsInProgram(*import.entry)) names.push_back(import.name);
    return names;
}

}  // namespace Module
