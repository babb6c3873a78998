// The registry, filled with the system's own means.
#include <windows.h>

#include <Platform/Registry.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace Conformance {
namespace {

constexpr int CurrentUser = 2;
constexpr const wchar_t* Folder = L"Software\\VelSockConformance";

struct KeyCloser {
    void operator()(Registry::Key* key) const { Registry::CloseKey(key); }
};
using Key = std::unique_ptr<Registry::Key, KeyCloser>;

std::vector<unsigned short> Wide(const std::wstring& text) {
    std::vector<unsigned short> units(text.begin(), text.end());
    units.push_back(0);
    return units;
}

std::wstring Text(const System::WideUnits& units) {
    return {units.begin(), units.end()};
}

class RegistryKeys : public testing::Test {
protected:
    void SetUp() override { Create(L""); }
    void TearDown() override {
        EXPECT_EQ(::RegDeleteTreeW(HKEY_CURRENT_USER, Folder), ERROR_SUCCESS);
    }

    static void Create(const std::wstring& below) {
        HKEY key = nullptr;
        const std::wstring path = Folder + below;
        ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_WRITE,
                                    nullptr, &key, nullptr),
                  ERROR_SUCCESS);
        ::RegCloseKey(key);
    }
    static void Write(const wchar_t* name, const std::wstring& text, DWORD type = REG_SZ) {
        const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, Folder, name, type, text.c_str(), bytes),
                  ERROR_SUCCESS);
    }

    Key Open(const std::wstring& path, int hive = CurrentUser) {
        error_ = 4711;
        return Key(Registry::OpenKey(hive, Wide(path).data(), error_));
    }
    Key OpenBelow(const Key& key, const std::wstring& name) {
        error_ = 4711;
        return Key(Registry::OpenSubKey(*key, Wide(name).data(), error_));
    }
    bool Has(const Key& key, const std::wstring& name) {
        error_ = 4711;
        return Registry::ReadValue(*key, Wide(name).data(), nullptr, error_);
    }
    // The value's text in brackets, or what came in its place.
    std::wstring Read(const Key& key, const std::wstring& name) {
        System::WideUnits units;
        error_ = 4711;
        if (!Registry::ReadValue(*key, Wide(name).data(), &units, error_)) return L"none";
        return L"[" + Text(units) + L"]";
    }
    std::vector<std::wstring> SubKeys(const Key& key) {
        std::vector<std::wstring> names;
        error_ = 4711;
        for (const System::WideUnits& name : Registry::SubKeyNames(*key, error_)) {
            names.push_back(Text(name));
        }
        return names;
    }

    unsigned int error_ = 0;
};

TEST_F(RegistryKeys, HivesAreTheSystemsPredefinedKeys) {
    EXPECT_NE(Open(L"SOFTWARE\\Microsoft", Registry::LocalMachine), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Open(Folder, Registry::LocalMachine), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_NE(Open(Folder), nullptr);
    EXPECT_EQ(error_, 0U);
    for (const int hive : {1, 4, 6}) {
        EXPECT_NE(Open(L"", hive), nullptr) << hive;
        EXPECT_EQ(error_, 0U);
    }
}

TEST_F(RegistryKeys, TextsOfBothKindsAreReadAsTheyAreStored) {
    Write(L"Plain", L"example.org");
    Write(L"Expandable", L"%PATH%", REG_EXPAND_SZ);
    Write(L"Empty", L"");
    Write(L"Wide", L"\u00E9\u20AC\xD83D\xDE00");
    const Key key = Open(Folder);
    EXPECT_EQ(Read(key, L"Plain"), L"[example.org]");
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, L"plain"), L"[example.org]");
    EXPECT_EQ(Read(key, L"Expandable"), L"[%PATH%]");
    EXPECT_EQ(Read(key, L"Empty"), L"[]");
    EXPECT_EQ(Read(key, L"Wide"), L"[\u00E9\u20AC\xD83D\xDE00]");
    EXPECT_TRUE(Has(key, L"PLAIN"));
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, ALargeValueIsReadWhole) {
    for (const std::size_t length : {254U, 255U, 256U, 257U, 100'000U}) {
        Write(L"Large", std::wstring(length, L'x'));
        EXPECT_EQ(Read(Open(Folder), L"Large"), L"[" + std::wstring(length, L'x') + L"]");
    }
}

TEST_F(RegistryKeys, ATextThatIsStoredWithoutItsEndIsReadToItsEnd) {
    ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, Folder, L"Open", REG_SZ, L"abcd", 4),
              ERROR_SUCCESS);
    EXPECT_EQ(Read(Open(Folder), L"Open"), L"[ab]");
}

TEST_F(RegistryKeys, AValueThatIsNoTextIsAnError) {
    const DWORD number = 7;
    ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, Folder, L"Number", REG_DWORD, &number, 4),
              ERROR_SUCCESS);
    const Key key = Open(Folder);
    EXPECT_TRUE(Has(key, L"Number"));
    EXPECT_EQ(Read(key, L"Number"), L"none");
    EXPECT_EQ(error_, unsigned{ERROR_UNSUPPORTED_TYPE});
}

TEST_F(RegistryKeys, WhatIsMissingIsNoError) {
    EXPECT_EQ(Open(std::wstring(Folder) + L"\\Missing"), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Open(std::wstring(Folder) + L"\\Missing\\Deeper"), nullptr);
    EXPECT_EQ(error_, 0U);
    const Key key = Open(Folder);
    EXPECT_EQ(OpenBelow(key, L"Missing"), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_FALSE(Has(key, L"Missing"));
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, L"Missing"), L"none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, SubKeysAreListedAndOpenByTheirNames) {
    Create(L"\\{1-2}");
    Create(L"\\{3-4}\\Deeper");
    Create(L"\\" + std::wstring(255, L'k'));
    const Key key = Open(Folder);
    std::vector<std::wstring> names = SubKeys(key);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(names, (std::vector<std::wstring>{std::wstring(255, L'k'), L"{1-2}", L"{3-4}"}));
    const Key below = OpenBelow(key, L"{3-4}");
    EXPECT_EQ(SubKeys(below), std::vector<std::wstring>{L"Deeper"});
    EXPECT_EQ(SubKeys(OpenBelow(below, L"deeper")), std::vector<std::wstring>{});
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, TheEmptyPathIsTheHiveItself) {
    const Key hive = Open(L"", Registry::LocalMachine);
    ASSERT_NE(hive, nullptr);
    EXPECT_NE(OpenBelow(hive, L"SOFTWARE"), nullptr);
}

}  // namespace
}  // namespace Conformance
