#include <windows.h>

#include "support/Wine.h"

bool Support::RunsOnWine() noexcept {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
