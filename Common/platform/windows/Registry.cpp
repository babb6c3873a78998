// The Windows registry.
#include "Platform/Registry.h"

#include "WideTexts.h"

#include <windows.h>

#include <memory>
#include <string>

struct Registry::Key {
    HKEY handle;
};

namespace {

// A missing key or value is an answer, not a failure.
unsigned int FailureOf(LSTATUS status) noexcept {
    const bool missing = status == ERROR_FILE_NOT_FOUND || status == ERROR_PATH_NOT_FOUND;
    return missing ? 0U : static_cast<unsigned int>(status);
}

// Hives number the system's predefined keys from 1. Returns null for any other number, and for
// predefined keys that are not trees of settings.
HKEY RootKey(int hive) noexcept {
    switch (hive) {
        case 1:
            return HKEY_CLASSES_ROOT;
        case 2:
            return HKEY_CURRENT_USER;
        case Registry::LocalMachine:
            return HKEY_LOCAL_MACHINE;
        case 4:
            return HKEY_USERS;
        case 6:
            return HKEY_CURRENT_CONFIG;
        default:
            return nullptr;
    }
}

Registry::Key* Open(HKEY parent, const unsigned short* path, unsigned int& error) {
    auto key = std::make_unique<Registry::Key>();
    const std::wstring name = Windows::SystemText(path);
    const LSTATUS status = ::RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key->handle);
    error = FailureOf(status);
    return status == ERROR_SUCCESS ? key.release() : nullptr;
}

// Returns string values of both types as they are stored; any other type is an error. References to
// environment variables are not expanded: the library reads none.
LSTATUS QueryText(HKEY key, const std::wstring& name, std::wstring& text) {
    constexpr DWORD flags = RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND;
    auto bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const LSTATUS status =
        ::RegGetValueW(key, nullptr, name.c_str(), flags, nullptr, text.data(), &bytes);
    text.resize(bytes / sizeof(wchar_t));
    return status;
}

// The value may grow between the two queries.
LSTATUS QueryWholeText(HKEY key, const std::wstring& name, std::wstring& text) {
    constexpr std::size_t usualLength = 256;
    text.resize(usualLength);
    LSTATUS status = ERROR_SUCCESS;
    while ((status = QueryText(key, name, text)) == ERROR_MORE_DATA) {
    }
    return status;
}

}  // namespace

static_assert(Registry::LocalMachine == 3);

Registry::Key* Registry::OpenKey(int hive, const unsigned short* path, unsigned int& error) {
    const HKEY root = RootKey(hive);
    error = 0;
    return root != nullptr ? Open(root, path, error) : nullptr;
}

Registry::Key* Registry::OpenSubKey(Key& key, const unsigned short* name, unsigned int& error) {
    return Open(key.handle, name, error);
}

void Registry::CloseKey(Key* key) noexcept {
    const std::unique_ptr<Key> owner(key);
    if (owner) ::RegCloseKey(owner->handle);
}

bool Registry::ReadValue(Key& key, const unsigned short* name, System::WideUnits* text,
                         unsigned int& error) {
    const std::wstring value = Windows::SystemText(name);
    std::wstring contents;
    const LSTATUS status = text == nullptr ? ::RegQueryValueExW(key.handle, value.c_str(), nullptr,
                                                                nullptr, nullptr, nullptr)
                                           : QueryWholeText(key.handle, value, contents);
    error = FailureOf(status);
    if (status != ERROR_SUCCESS) return false;
    if (text != nullptr) *text = Windows::OwnText(contents.c_str(), std::wcslen(contents.c_str()));
    return true;
}

std::vector<System::WideUnits> Registry::SubKeyNames(Key& key, unsigned int& error) {
    std::vector<System::WideUnits> names;
    wchar_t name[256];  // no key has a longer name
    LSTATUS status = ERROR_SUCCESS;
    for (DWORD index = 0; status == ERROR_SUCCESS; ++index) {
        DWORD length = sizeof name / sizeof *name;
        status =
            ::RegEnumKeyExW(key.handle, index, name, &length, nullptr, nullptr, nullptr, nullptr);
        if (status == ERROR_SUCCESS) names.push_back(Windows::OwnText(name, length));
    }
    error = status == ERROR_NO_MORE_ITEMS ? 0U : FailureOf(status);
    return names;
}
