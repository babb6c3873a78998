#include <cerrno>

#include "SettingsScene.h"

namespace Conformance {
namespace {

using Names = std::vector<std::u16string>;
using RegistryKeys = SettingsKeys;

TEST_F(RegistryKeys, AValueIsAFilesContents) {
    tree_.Write("HKLM/System/Network/Domain", "example.org");
    const Key key = Open(u"System\\Network");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, u"Domain"), u"[example.org]");
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, OneTrailingLineFeedIsNoPartOfTheValue) {
    tree_.Write("HKLM/K/One", "text\n");
    tree_.Write("HKLM/K/Two", "text\n\n");
    tree_.Write("HKLM/K/Empty", "");
    tree_.Write("HKLM/K/OnlyThat", "\n");
    tree_.Write("HKLM/K/Within", "a\nb");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"One"), u"[text]");
    EXPECT_EQ(Read(key, u"Two"), u"[text\n]");
    EXPECT_EQ(Read(key, u"Empty"), u"[]");
    EXPECT_EQ(Read(key, u"OnlyThat"), u"[]");
    EXPECT_EQ(Read(key, u"Within"), u"[a\nb]");
}

TEST_F(RegistryKeys, ValuesAreUtf8) {
    tree_.Write("HKLM/K/Text", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
    tree_.Write("HKLM/K/Broken",
                "a\xFF"
                "b");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"Text"), u"[\u00E9\u20AC\U0001F600]");
    EXPECT_EQ(Read(key, u"Broken"), u"[a\uFFFDb]");
}

TEST_F(RegistryKeys, ALargeValueIsReadWhole) {
    tree_.Write("HKLM/K/Large", std::string(100'000, 'x'));
    EXPECT_EQ(Read(Open(u"K"), u"Large"), InBrackets(std::u16string(100'000, u'x')));
}

TEST_F(RegistryKeys, AValueWithoutBoundsIsAnError) {
    tree_.Write("HKLM/K/Huge", std::string(3U << 20U, 'x'));
    EXPECT_EQ(Read(Open(u"K"), u"Huge"), u"none");
    EXPECT_EQ(error_, static_cast<unsigned int>(EFBIG));
}

TEST_F(RegistryKeys, NamesCompareWithoutCase) {
    tree_.Write("HKLM/Software/Product/IPVersion", "6");
    const Key key = Open(u"SOFTWARE\\product");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(Read(key, u"ipversion"), u"[6]");
    EXPECT_TRUE(Has(key, u"IPVERSION"));
}

TEST_F(RegistryKeys, EachLetterComparesWithoutCase) {
    tree_.Write("HKLM/ABCDEFGHIJKLMNOPQRSTUVWXYZ/abcdefghijklmnopqrstuvwxyz", "text");
    const Key key = Open(u"abcdefghijklmnopqrstuvwxyz");
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(Read(key, u"ABCDEFGHIJKLMNOPQRSTUVWXYZ"), u"[text]");
    // The neighbours of the letters have no case.
    tree_.Write("HKLM/K/@[", "upper");
    EXPECT_FALSE(Has(Open(u"K"), u"`{"));
}

TEST_F(RegistryKeys, OfNamesThatDifferInCaseTheOneThatIsSpeltSoIsMeantOrElseTheFirst) {
    tree_.Write("HKLM/K/NAME", "upper");
    tree_.Write("HKLM/K/name", "lower");
    tree_.Write("HKLM/K/Sub/Value", "first");
    tree_.Write("HKLM/K/sub/Value", "second");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"NAME"), u"[upper]");
    EXPECT_EQ(Read(key, u"name"), u"[lower]");
    EXPECT_EQ(Read(key, u"Name"), u"[upper]");
    std::u16string values;
    for (const std::u16string& name : SubKeys(key)) {
        values += Read(OpenBelow(key, name), u"Value");
    }
    EXPECT_EQ(values, u"[first][second]");
}

TEST_F(RegistryKeys, WhatIsMissingIsNoError) {
    tree_.Write("HKLM/K/Value", "text");
    EXPECT_EQ(Open(u"Missing"), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Open(u"K\\Missing\\Deeper"), nullptr);
    EXPECT_EQ(error_, 0U);
    const Key key = Open(u"K");
    EXPECT_EQ(OpenBelow(key, u"Missing"), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_FALSE(Has(key, u"Missing"));
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, u"Missing"), u"none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, AMissingTreeHasNoKeys) {
    EXPECT_EQ(Open(u"K"), nullptr);
    EXPECT_EQ(error_, 0U);
    std::filesystem::remove_all(tree_.Root());
    EXPECT_EQ(Open(u"K"), nullptr);
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, OtherHivesDoNotExist) {
    tree_.Write("HKLM/K/Value", "text");
    for (const int hive : {-1, 0, 1, 2, 4, 5}) {
        EXPECT_EQ(Open(u"K", hive), nullptr);
        EXPECT_EQ(error_, 0U);
    }
}

TEST_F(RegistryKeys, KeysAndValuesAreNotTakenForEachOther) {
    tree_.Write("HKLM/K/Sub/Value", "text");
    const Key key = Open(u"K");
    EXPECT_FALSE(Has(key, u"Sub"));
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Open(u"K\\Sub\\Value"), nullptr);
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, AKeyAndAValueMayHaveNamesThatDifferInCaseOnly) {
    tree_.Write("HKLM/K/Name/Inner", "inner");
    tree_.Write("HKLM/K/name", "outer");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"NAME"), u"[outer]");
    EXPECT_EQ(Read(OpenBelow(key, u"NAME"), u"Inner"), u"[inner]");
}

TEST_F(RegistryKeys, SubKeysAreListedInCodePointOrder) {
    for (const char* name : {"b", "a", "B", "Z", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD"}) {
        tree_.Write(std::string("HKLM/K/") + name + "/Value", "text");
    }
    tree_.Write("HKLM/K/NotAKey", "text");
    EXPECT_EQ(SubKeys(Open(u"K")),
              (Names{u"B", u"Z", u"a", u"b", u"\u00E9", u"\uFFFD", u"\U0001F600"}));
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(SubKeys(Open(u"K\\a")), Names{});
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, SubKeysOpenByTheirListedNames) {
    tree_.Write("HKLM/Interfaces/{1-2}/Domain", "first");
    tree_.Write("HKLM/Interfaces/{3-4}/Domain", "second");
    const Key key = Open(u"Interfaces");
    std::u16string domains;
    for (const std::u16string& name : SubKeys(key)) {
        domains += Read(OpenBelow(key, name), u"Domain");
    }
    EXPECT_EQ(domains, u"[first][second]");
}

TEST_F(RegistryKeys, AMountedConfigurationMapServesAsItIs) {
    tree_.Write("HKLM/K/..2024_01_01/Domain", "example.org");
    tree_.Write("HKLM/K/..2024_01_01/deep/Value", "text");
    tree_.Link("HKLM/K/..data", "..2024_01_01");
    tree_.Link("HKLM/K/Domain", "..data/Domain");
    tree_.Link("HKLM/K/deep", "..data/deep");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"domain"), u"[example.org]");
    EXPECT_EQ(SubKeys(key), Names{u"deep"});
    EXPECT_EQ(OpenBelow(key, u"..data"), nullptr);
    EXPECT_EQ(error_, 0U);
}

TEST_F(RegistryKeys, NoNameLeadsOutOfTheTree) {
    tree_.Write("HKLM/K/Value", "inside");
    tree_.Write("HKLM/.hidden/Value", "hidden");
    tree_.Write("outside/Value", "outside");
    for (const char16_t* path :
         {u"..\\outside", u"K\\..\\..\\outside", u"../outside", u"K\\..", u".", u"K\\.", u"..",
          u"K/", u"/", u"/etc", u"\\K", u"K\\", u"K\\\\", u"\\", u".hidden", u"K\\..\\K"}) {
        EXPECT_EQ(Open(path), nullptr) << std::filesystem::path(path);
        EXPECT_EQ(error_, 0U);
    }
    const Key key = Open(u"K");
    for (const char16_t* name : {u"..", u"../../outside/Value", u"./Value", u"/etc/passwd", u"",
                                 u"Value/", u"..\\Value"}) {
        EXPECT_FALSE(Has(key, name)) << std::filesystem::path(name);
        EXPECT_EQ(error_, 0U);
    }
}

TEST_F(RegistryKeys, HalfASurrogatePairNamesNothing) {
    tree_.Write("HKLM/K/\xF0\x9F\x98\x80", "text");
    const Key key = Open(u"K");
    const std::u16string whole = u"\U0001F600";
    EXPECT_TRUE(Has(key, whole));
    EXPECT_FALSE(Has(key, whole.substr(0, 1)));
}

TEST_F(RegistryKeys, TheEmptyPathIsTheHiveItself) {
    tree_.Write("HKLM/Value", "text");
    EXPECT_EQ(Read(Open(u""), u"Value"), u"[text]");
}

TEST_F(RegistryKeys, UnreadableThingsAreErrors) {
    tree_.Link("HKLM/K/Loop", "Loop");
    EXPECT_EQ(Open(u"K\\Loop"), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
    const Key key = Open(u"K");
    EXPECT_EQ(OpenBelow(key, u"Loop"), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
    EXPECT_FALSE(Has(key, u"Loop"));
    EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
}

TEST_F(RegistryKeys, DanglingLinksPipesAndSocketsAreNoValues) {
    tree_.Link("HKLM/K/Dangling", "nowhere");
    tree_.MakePipe("HKLM/K/Pipe");
    tree_.MakeSocket("HKLM/K/Socket");
    const Key key = Open(u"K");
    EXPECT_FALSE(Has(key, u"Dangling"));
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, u"Pipe"), u"none");
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(key, u"Socket"), u"none");
    EXPECT_EQ(error_, 0U);
}

}  // namespace
}  // namespace Conformance
