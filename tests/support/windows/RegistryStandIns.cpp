#include <windows.h>
// Behind it.
#include <Platform/Registry.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "StandIns.h"

namespace Module {

namespace {

using Units = System::WideUnits;

LONG_PTR NumberOf(HKEY key) {
    return reinterpret_cast<LONG_PTR>(key);
}

// The system's own keys, one a hive, are negative numbers; the scripted registry's are addresses.
bool IsHive(HKEY key) {
    return NumberOf(key) < 0;
}

int HiveOf(HKEY key) {
    return static_cast<int>(NumberOf(key) - NumberOf(HKEY_CLASSES_ROOT)) + 1;
}

Registry::Key& ScriptedKey(HKEY key) {
    return *reinterpret_cast<Registry::Key*>(key);
}

const unsigned short* UnitsOf(const wchar_t* text) {
    return static_cast<const unsigned short*>(static_cast<const void*>(text));
}

// The seam reports what is missing without an error.
LSTATUS StatusOf(bool found, unsigned int error) {
    if (error != 0) return static_cast<LSTATUS>(error);
    return found ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

LSTATUS WINAPI OpenKey(HKEY parent, LPCWSTR path, DWORD options, REGSAM access, PHKEY result) {
    EXPECT_EQ(options, 0U);
    EXPECT_EQ(access, static_cast<REGSAM>(KEY_READ));
    unsigned int error = 0;
    Registry::Key* const key =
        IsHive(parent) ? Registry::OpenKey(HiveOf(parent), UnitsOf(path), error)
                       : Registry::OpenSubKey(ScriptedKey(parent), UnitsOf(path), error);
    *result = reinterpret_cast<HKEY>(key);
    return StatusOf(key != nullptr, error);
}

LSTATUS WINAPI CloseKey(HKEY key) {
    Registry::CloseKey(&ScriptedKey(key));
    return ERROR_SUCCESS;
}

// Whether the value is there.
LSTATUS WINAPI QueryValue(HKEY key, LPCWSTR name, LPDWORD, LPDWORD, LPBYTE data, LPDWORD) {
    EXPECT_EQ(data, nullptr);
    unsigned int error = 0;
    const bool found = Registry::ReadValue(ScriptedKey(key), UnitsOf(name), nullptr, error);
    return StatusOf(found, error);
}

LSTATUS Give(const Units& text, void* place, LPDWORD bytes) {
    const std::size_t room = *bytes / sizeof(wchar_t);
    *bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    if (text.size() >= room) return ERROR_MORE_DATA;
    *std::copy(text.begin(), text.end(), static_cast<wchar_t*>(place)) = L'\0';
    return ERROR_SUCCESS;
}

LSTATUS WINAPI GetValue(HKEY key, LPCWSTR subKey, LPCWSTR name, DWORD flags, LPDWORD, PVOID place,
                        LPDWORD bytes) {
    EXPECT_EQ(subKey, nullptr);
    EXPECT_EQ(flags, static_cast<DWORD>(RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND));
    unsigned int error = 0;
    Units text;
    const bool found = Registry::ReadValue(ScriptedKey(key), UnitsOf(name), &text, error);
    return found ? Give(text, place, bytes) : StatusOf(found, error);
}

LSTATUS WINAPI EnumKey(HKEY key, DWORD index, LPWSTR place, LPDWORD length, LPDWORD, LPWSTR,
                       LPDWORD, PFILETIME) {
    unsigned int error = 0;
    const std::vector<Units> names = Registry::SubKeyNames(ScriptedKey(key), error);
    if (error != 0) return static_cast<LSTATUS>(error);
    if (index >= names.size()) return ERROR_NO_MORE_ITEMS;
    const Units& name = names[index];
    if (name.size() >= *length) return ERROR_MORE_DATA;
    *std::copy(name.begin(), name.end(), place) = L'\0';
    *length = static_cast<DWORD>(name.size());
    return ERROR_SUCCESS;
}

template <class Function>
StandIn OfRegistry(const char* name, Function* function) {
    return {"advapi32.dll", name, reinterpret_cast<void*>(function)};
}

}  // namespace

std::vector<StandIn> RegistryStandIns() {
    return {
        OfRegistry("RegOpenKeyExW", OpenKey),       OfRegistry("RegCloseKey", CloseKey),
        OfRegistry("RegQueryValueExW", QueryValue), OfRegistry("RegGetValueW", GetValue),
        OfRegistry("RegEnumKeyExW", EnumKey),
    };
}

}  // namespace Module
