#include <windows.h>

#include "conformance/WineAnswers.h"

bool Conformance::RunsOnWine() noexcept {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}
