// How folders of the settings tree are listed: how often, and what becomes of a listing that fails.
#include <cerrno>

#include "FileCalls.h"
#include "SettingsScene.h"

namespace Conformance {
namespace {

using Names = std::vector<std::u16string>;

// Lets one call of that name fail, the n-th from 0 on.
WatchedFileCalls::Watcher Failing(std::string_view name, int number, int error) {
    return [=, calls = 0](FileCall& call) mutable {
        if (call.name == name && calls++ == number) call.error = error;
    };
}

class SettingsListing : public SettingsKeys {
protected:
    // The folder's listing fails after this many entries; what came before does not count.
    template <typename Question>
    void ExpectFailure(int entries, Question question) {
        const WatchedFileCalls watched(Failing("readdir", entries, EIO));
        question();
        EXPECT_EQ(error_, static_cast<unsigned int>(EIO)) << entries;
    }
};

TEST_F(SettingsListing, ThatFailsMidwayIsAnError) {
    tree_.Write("HKLM/K/NAME", "value");
    tree_.Write("HKLM/K/SUB/Value", "value");
    tree_.Write("HKLM/K/OTHER/Value", "value");
    const Key hive = Open(u"");
    const Key key = Open(u"K");
    // Three entries, those of the folder itself and the one above, and the end.
    for (int entries = 0; entries < 6; ++entries) {
        ExpectFailure(entries, [&] { EXPECT_EQ(Read(key, u"name"), u"none"); });
        ExpectFailure(entries, [&] { EXPECT_FALSE(Has(key, u"name")); });
        ExpectFailure(entries, [&] { EXPECT_FALSE(Has(key, u"missing")); });
        ExpectFailure(entries, [&] { EXPECT_EQ(OpenBelow(key, u"sub"), nullptr); });
        ExpectFailure(entries, [&] { EXPECT_EQ(SubKeys(key), Names{}); });
        ExpectFailure(entries, [&] { EXPECT_EQ(OpenBelow(hive, u"K\\sub"), nullptr); });
    }
}

TEST_F(SettingsListing, ThatCannotBeginIsAnError) {
    tree_.Write("HKLM/K/NAME", "value");
    const Key key = Open(u"K");
    // The attempt at the name as it is spelt comes first.
    for (const int error : {EMFILE, EIO, EACCES, ENOMEM}) {
        const WatchedFileCalls watched(Failing("openat2", 1, error));
        EXPECT_FALSE(Has(key, u"name"));
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
    for (const int error : {EMFILE, EIO, EACCES, ENOMEM}) {
        const WatchedFileCalls watched(Failing("openat2", 0, error));
        EXPECT_EQ(SubKeys(key), Names{});
        EXPECT_EQ(error_, static_cast<unsigned int>(error));
    }
}

TEST_F(SettingsListing, AValueThatCannotBeReadIsAnError) {
    tree_.Write("HKLM/K/Value", std::string(10'000, 'x'));
    const Key key = Open(u"K");
    for (int part = 0; part < 3; ++part) {
        const WatchedFileCalls watched(Failing("read", part, EIO));
        EXPECT_EQ(Read(key, u"Value"), u"none");
        EXPECT_EQ(error_, static_cast<unsigned int>(EIO));
    }
}

// What the questions about the network's interfaces come to.
class SettingsListingOfManyKeys : public SettingsKeys {
protected:
    void MakeKeysUpTo(int count) {
        for (; made_ < count; ++made_) {
            tree_.Write("HKLM/Interfaces/{" + std::to_string(made_) + "}/Value", "text");
        }
    }

    void AskEach() {
        const Key interfaces = Open(u"Interfaces");
        for (const std::u16string& name : SubKeys(interfaces)) {
            const Key key = OpenBelow(interfaces, name);
            ASSERT_NE(key, nullptr);
            EXPECT_FALSE(Has(key, u"Missing"));
            EXPECT_EQ(Read(key, u"Value"), u"[text]");
        }
    }

    int CallsToAskEachOf(int keys) {
        MakeKeysUpTo(keys);
        int calls = 0;
        const WatchedFileCalls watched([&calls](FileCall&) { ++calls; });
        AskEach();
        return calls;
    }

private:
    int made_ = 0;
};

TEST_F(SettingsListingOfManyKeys, TakeTimesAsManyCallsAsTheyAre) {
    const int few = CallsToAskEachOf(100);
    EXPECT_LE(CallsToAskEachOf(400), 4 * few);
}

TEST_F(SettingsListingOfManyKeys, AreNotListedToFindOneByItsOwnName) {
    MakeKeysUpTo(100);
    const Key interfaces = Open(u"Interfaces");
    int entries = 0;
    const WatchedFileCalls watched(
        [&entries](FileCall& call) { entries += call.name == "readdir"; });
    EXPECT_NE(OpenBelow(interfaces, u"{7}"), nullptr);
    EXPECT_EQ(entries, 0);
    EXPECT_EQ(OpenBelow(interfaces, u"{x}"), nullptr);
    EXPECT_GE(entries, 100);
}

}  // namespace
}  // namespace Conformance
