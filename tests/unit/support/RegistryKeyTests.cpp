#include <VelBase/WideLiteral.h>
#include <VelRegistry/Key.h>
#include <VelRegistry/KeyException.h>

#include <functional>
#include <memory>
#include <new>
#include <type_traits>

#include "scripted/ScriptedPlatform.h"

namespace {

using namespace Scripted;
using VelBase::operator""_wide;
using VelRegistry::Key;
using VelRegistry::KeyException;
using VelRegistry::KeyList;
using VelRegistry::KeyOwner;
using VelRegistry::OpenKeyFromRoot;
using VelRegistry::ROOT_LOCAL_MACHINE;

static_assert(ROOT_LOCAL_MACHINE == 3);
static_assert(sizeof(VelRegistry::RootHives) == 4);
static_assert(std::is_same_v<decltype(&OpenKeyFromRoot),
                             Key* (*)(VelRegistry::RootHives, const unsigned short*, bool)>);
static_assert(!std::is_copy_constructible_v<Key> && !std::is_copy_assignable_v<Key>);
static_assert(!std::is_destructible_v<Key>, "a key ends with its Release");

class RegistryKeys : public PlatformTest {
protected:
    void SetUp() override {
        PlatformTest::SetUp();
        RegistryTree()
            .Value("SOFTWARE\\Product", "Version", u"\u20AC 5")
            .Value("SOFTWARE\\Product", "Empty", u"")
            .Key("SOFTWARE\\Product\\First")
            .Key("SOFTWARE\\Product\\Zweiter");
    }

    static KeyOwner OpenProduct() {
        return KeyOwner(OpenKeyFromRoot(ROOT_LOCAL_MACHINE, "SOFTWARE\\Product"_wide, false));
    }

    static void ExpectKeyException(const std::function<void()>& operation,
                                   std::u16string_view text) {
        try {
            operation();
            ADD_FAILURE() << "no exception";
        } catch (const KeyException& exception) {
            EXPECT_EQ(Text(exception.GetMessage()), text);
            EXPECT_EQ(exception.GetID(), 5);
            EXPECT_EQ(exception.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
        }
    }
};

TEST_F(RegistryKeys, KeyIsOpenedFromTheHiveAndClosedByItsRelease) {
    Key* const key = OpenKeyFromRoot(ROOT_LOCAL_MACHINE, "SOFTWARE\\Product"_wide, false);
    ASSERT_NE(key, nullptr);
    EXPECT_EQ(Ledger(), Lines{"registry key 1"});
    key->Release();
    EXPECT_EQ(Transcript(), (Lines{"OpenKey(3, \"SOFTWARE\\Product\")", "CloseKey(1)"}));
}

TEST_F(RegistryKeys, EveryHiveNumberIsPassedOn) {
    for (const int hive : {0, 3, 4, 17, -1}) {
        OpenKeyFromRoot(static_cast<VelRegistry::RootHives>(hive), "No such key"_wide, true);
    }
    EXPECT_EQ(Transcript(), (Lines{"OpenKey(0, \"No such key\")", "OpenKey(3, \"No such key\")",
                                   "OpenKey(4, \"No such key\")", "OpenKey(17, \"No such key\")",
                                   "OpenKey(-1, \"No such key\")"}));
}

TEST_F(RegistryKeys, MissingKeyIsNoKeyAndNoFailure) {
    EXPECT_EQ(OpenKeyFromRoot(ROOT_LOCAL_MACHINE, "SOFTWARE\\Other"_wide, false), nullptr);
    const KeyOwner key = OpenProduct();
    EXPECT_EQ(key->OpenSubKey("Third"_wide, false), nullptr);
    EXPECT_FALSE(key->HasSubKey("Third"_wide));
    EXPECT_FALSE(key->HasValue("Third"_wide));
}

TEST_F(RegistryKeys, SubKeyTestLeavesNothingOpen) {
    const KeyOwner key = OpenProduct();
    ClearTranscript();
    EXPECT_TRUE(key->HasSubKey("First"_wide));
    EXPECT_FALSE(key->HasSubKey("Third"_wide));
    EXPECT_EQ(Transcript(),
              (Lines{"OpenSubKey(1, \"First\")", "CloseKey(2)", "OpenSubKey(1, \"Third\")"}));
}

TEST_F(RegistryKeys, SubKeyIsAKeyOfItsOwn) {
    KeyOwner key = OpenProduct();
    const KeyOwner subKey(key->OpenSubKey("First"_wide, false));
    ASSERT_NE(subKey, nullptr);
    key.reset();
    EXPECT_EQ(Ledger(), Lines{"registry key 2"});
    EXPECT_FALSE(subKey->HasValue("Version"_wide));
}

TEST_F(RegistryKeys, ValueTestReadsNoText) {
    const KeyOwner key = OpenProduct();
    ClearTranscript();
    EXPECT_TRUE(key->HasValue("Version"_wide));
    EXPECT_TRUE(key->HasValue("Empty"_wide));
    EXPECT_EQ(Transcript(),
              (Lines{"ReadValue(1, \"Version\", null)", "ReadValue(1, \"Empty\", null)"}));
}

TEST_F(RegistryKeys, TextIsReadWhole) {
    RegistryTree().Value("SOFTWARE\\Product", "Cut", std::u16string(u"before\0behind", 13));
    const KeyOwner key = OpenProduct();
    EXPECT_EQ(Text(key->ReadText("Version"_wide).c_str()), u"\u20AC 5");
    EXPECT_EQ(Text(key->ReadText("Empty"_wide).c_str()), u"");
    EXPECT_EQ(Text(key->ReadText("Missing"_wide).c_str()), u"");
    EXPECT_EQ(Text(key->ReadText("Cut"_wide).c_str()), u"before");
}

TEST_F(RegistryKeys, SubKeysAreListedInTheSystemsOrder) {
    const KeyOwner key = OpenProduct();
    const std::unique_ptr<KeyList> list(key->ListSubKeys());
    ASSERT_EQ(list->GetCount(), 2u);
    EXPECT_EQ(Text(list->GetItem(0)), u"First");
    EXPECT_EQ(Text(list->GetItem(1)), u"Zweiter");
    EXPECT_EQ(list->GetItem(1), list->GetItem(1));
    const KeyOwner leaf(key->OpenSubKey("First"_wide, false));
    const std::unique_ptr<KeyList> none(leaf->ListSubKeys());
    EXPECT_EQ(none->GetCount(), 0u);
}

TEST_F(RegistryKeys, ListOutlivesItsKey) {
    KeyOwner key = OpenProduct();
    const std::unique_ptr<KeyList> list(key->ListSubKeys());
    key.reset();
    EXPECT_EQ(Text(list->GetItem(0)), u"First");
}

TEST_F(RegistryKeys, NullIsTheEmptyText) {
    KeyOwner(OpenKeyFromRoot(ROOT_LOCAL_MACHINE, nullptr, false));
    const KeyOwner key = OpenProduct();
    ClearTranscript();
    key->HasSubKey(nullptr);
    EXPECT_EQ(key->OpenSubKey(nullptr, false), nullptr);
    key->HasValue(nullptr);
    EXPECT_EQ(Text(key->ReadText(nullptr).c_str()), u"");
    EXPECT_EQ(Transcript(), (Lines{"OpenSubKey(1, \"\")", "OpenSubKey(1, \"\")",
                                   "ReadValue(1, \"\", null)", "ReadValue(1, \"\")"}));
}

TEST_F(RegistryKeys, FailuresNameWhatWasAskedAndTheReason) {
    const KeyOwner key = OpenProduct();
    const KeyOwner subKey(key->OpenSubKey("First"_wide, false));
    On::OpenKey().Fails(5).Fails(5);
    On::OpenSubKey().Fails(5).Fails(5).Fails(5);
    On::ReadValue().Fails(5).Fails(5);
    On::SubKeyNames().Fails(5);
    ExpectKeyException([] { OpenKeyFromRoot(ROOT_LOCAL_MACHINE, "A\\B"_wide, false); },
                       u"Cannot open the key A\\B: Description of 5.");
    ExpectKeyException([] { OpenKeyFromRoot(ROOT_LOCAL_MACHINE, nullptr, false); },
                       u"Cannot open the key : Description of 5.");
    ExpectKeyException([&] { key->HasSubKey("X"_wide); },
                       u"Cannot open the key SOFTWARE\\Product\\X: Description of 5.");
    ExpectKeyException([&] { key->OpenSubKey("X"_wide, false); },
                       u"Cannot open the key SOFTWARE\\Product\\X: Description of 5.");
    ExpectKeyException([&] { subKey->OpenSubKey("Y"_wide, false); },
                       u"Cannot open the key SOFTWARE\\Product\\First\\Y: Description of 5.");
    ExpectKeyException([&] { key->HasValue("V"_wide); },
                       u"Cannot read the value V of the key SOFTWARE\\Product: Description of 5.");
    ExpectKeyException([&] { key->ReadText("V"_wide); },
                       u"Cannot read the value V of the key SOFTWARE\\Product: Description of 5.");
    ExpectKeyException([&] { key->ListSubKeys(); },
                       u"Cannot list the sub-keys of the key SOFTWARE\\Product: Description of 5.");
}

TEST_F(RegistryKeys, FailureBelowTheHiveItselfBeginsWithTheName) {
    RegistryTree().Key("");
    const KeyOwner hive(OpenKeyFromRoot(ROOT_LOCAL_MACHINE, ""_wide, false));
    ASSERT_NE(hive, nullptr);
    On::OpenSubKey().Fails(5);
    ExpectKeyException([&] { hive->OpenSubKey("SOFTWARE"_wide, false); },
                       u"Cannot open the key SOFTWARE: Description of 5.");
}

TEST_F(RegistryKeys, FailureBelowAPathOfOneCharacterKeepsThePath) {
    RegistryTree().Key("S");
    const KeyOwner key(OpenKeyFromRoot(ROOT_LOCAL_MACHINE, "S"_wide, false));
    ASSERT_NE(key, nullptr);
    On::OpenSubKey().Fails(5);
    ExpectKeyException([&] { key->OpenSubKey("X"_wide, false); },
                       u"Cannot open the key S\\X: Description of 5.");
}

TEST_F(RegistryKeys, FailedKeyStaysUsable) {
    const KeyOwner key = OpenProduct();
    On::ReadValue().Fails(5);
    EXPECT_THROW(key->ReadText("Version"_wide), VelBase::Message);
    EXPECT_EQ(Text(key->ReadText("Version"_wide).c_str()), u"\u20AC 5");
}

TEST_F(RegistryKeys, KeysAndListsEndWhereverAnOperationThrows) {
    const auto walk = [] {
        const KeyOwner key = OpenProduct();
        key->HasSubKey("First"_wide);
        const KeyOwner subKey(key->OpenSubKey("First"_wide, false));
        key->HasValue("Version"_wide);
        key->ReadText("Version"_wide);
        const std::unique_ptr<KeyList> list(key->ListSubKeys());
        const std::unique_ptr<KeyList> more(subKey->ListSubKeys());
    };
    const std::function<void()> failures[] = {
        [] { On::OpenKey().Fails(5); },
        [] { On::OpenSubKey().Fails(5); },
        [] { On::OpenSubKey().Passes().Fails(5); },
        [] { On::ReadValue().Fails(5); },
        [] { On::ReadValue().Passes().Fails(5); },
        [] { On::SubKeyNames().Fails(5); },
        [] { On::SubKeyNames().Passes().Fails(5); },
    };
    for (const auto& fail : failures) {
        fail();
        EXPECT_THROW(walk(), KeyException);
        EXPECT_EQ(Ledger(), Lines{});
    }
    EXPECT_NO_THROW(walk());
}

TEST_F(RegistryKeys, KeysAndListsEndWhicheverAllocationFails) {
    bool happened = true;
    std::size_t number = 0;
    while (happened) {
        const Allocations::FailNth failing(++number);
        try {
            const KeyOwner key = OpenProduct();
            key->HasSubKey("First"_wide);
            const KeyOwner subKey(key->OpenSubKey("First"_wide, false));
            key->ReadText("Version"_wide);
            const std::unique_ptr<KeyList> list(key->ListSubKeys());
            EXPECT_FALSE(failing.Happened());
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(failing.Happened());
        }
        happened = failing.Happened();
        EXPECT_EQ(Ledger(), Lines{}) << "allocation " << number;
    }
    EXPECT_GT(number, 10u);
}

TEST_F(RegistryKeys, FailingAllocationsWhileAFailureIsToldLeaveNothing) {
    for (std::size_t number = 1;; ++number) {
        On::ReadValue().Fails(5);
        const KeyOwner key = OpenProduct();
        const Allocations::FailNth failing(number);
        try {
            key->ReadText("Version"_wide);
            FAIL() << "no exception";
        } catch (const KeyException& exception) {
            EXPECT_EQ(exception.GetID(), 5);
            EXPECT_FALSE(failing.Happened());
            EXPECT_GT(number, 3u);
            return;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(failing.Happened());
        }
    }
}

}  // namespace
