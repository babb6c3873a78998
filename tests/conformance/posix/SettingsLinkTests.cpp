// Links in the settings tree.
#include <cerrno>

#include "FileCalls.h"
#include "SettingsScene.h"

namespace Conformance {
namespace {

using Names = std::vector<std::u16string>;
constexpr unsigned int LeadsOut = EXDEV;

// A tree with something beside it.
class SettingsLinks : public SettingsKeys {
protected:
    SettingsLinks() {
        tree_.Write("HKLM/K/Value", "inside");
        tree_.Write("../" + beside_ + "/Value", "outside");
        tree_.Write("../" + beside_ + "/Sub/Value", "outside");
    }
    ~SettingsLinks() override { std::filesystem::remove_all(PathBeside("")); }

    std::string PathBeside(const std::string& name) const {
        return (tree_.Root().parent_path() / beside_ / name).string();
    }
    // The same as seen from a key.
    std::string WayBeside(const std::string& name) const {
        return "../../../" + beside_ + "/" + name;
    }

    void ExpectRefusedValue(const std::string& target) {
        const std::string name = "Link" + std::to_string(++links_);
        tree_.Link("HKLM/K/" + name, target);
        const Key key = Open(u"K");
        const std::u16string value(name.begin(), name.end());
        EXPECT_EQ(Read(key, value), u"none") << target;
        EXPECT_EQ(error_, LeadsOut) << target;
        EXPECT_FALSE(Has(key, value)) << target;
        EXPECT_EQ(error_, LeadsOut) << target;
    }

private:
    const std::string beside_ = tree_.Root().filename().string() + "-beside";
    int links_ = 0;
};

TEST_F(SettingsLinks, DoNotLeadAValueOutOfTheTree) {
    ExpectRefusedValue(PathBeside("Value"));
    ExpectRefusedValue(WayBeside("Value"));
    ExpectRefusedValue("/etc/passwd");
    ExpectRefusedValue("../../../../../../../../../etc/passwd");
    ExpectRefusedValue("/proc/self/fd/0");
    tree_.Link("HKLM/K/First", "Second");
    tree_.Link("HKLM/K/Second", PathBeside("Value"));
    ExpectRefusedValue("First");
    // Out, and in again.
    ExpectRefusedValue("../../../" + tree_.Root().filename().string() + "/HKLM/K/Value");
    ExpectRefusedValue((tree_.Root() / "HKLM/K/Value").string());
}

TEST_F(SettingsLinks, DoNotLeadAKeyOutOfTheTree) {
    tree_.Link("HKLM/K/Absolute", PathBeside("Sub"));
    tree_.Link("HKLM/K/Relative", WayBeside("Sub"));
    const Key key = Open(u"K");
    for (const char16_t* name : {u"Absolute", u"Relative", u"ABSOLUTE"}) {
        EXPECT_EQ(OpenBelow(key, name), nullptr);
        EXPECT_EQ(error_, LeadsOut);
    }
    EXPECT_EQ(Open(u"K\\Absolute"), nullptr);
    EXPECT_EQ(error_, LeadsOut);
    EXPECT_EQ(SubKeys(key), Names{});
    EXPECT_EQ(error_, 0U);
}

TEST_F(SettingsLinks, DoNotLeadTheHiveOutOfTheTree) {
    std::filesystem::rename(tree_.Root() / "HKLM", tree_.Root() / "Other");
    tree_.Link("HKLM", PathBeside(""));
    EXPECT_EQ(Open(u""), nullptr);
    EXPECT_EQ(error_, LeadsOut);
    EXPECT_EQ(Open(u"Sub"), nullptr);
    EXPECT_EQ(error_, LeadsOut);
}

TEST_F(SettingsLinks, LeadAnywhereInTheTree) {
    tree_.Write("HKLM/L/Sub/Value", "other");
    tree_.Write("Common/Value", "common");
    tree_.Link("HKLM/K/Same", "Value");
    tree_.Link("HKLM/K/Other", "../L/Sub/Value");
    tree_.Link("HKLM/K/Common", "../../Common/Value");
    tree_.Link("HKLM/K/Key", "../L/Sub");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"Same"), u"[inside]");
    EXPECT_EQ(Read(key, u"Other"), u"[other]");
    EXPECT_EQ(Read(key, u"Common"), u"[common]");
    EXPECT_EQ(SubKeys(key), Names{u"Key"});
    EXPECT_EQ(Read(OpenBelow(key, u"key"), u"Value"), u"[other]");
}

TEST_F(SettingsLinks, LeadToAMountedConfigurationMapOfTheWholeTree) {
    std::filesystem::remove_all(tree_.Root() / "HKLM");
    tree_.Write("..2024_01_01/HKLM/Software/Value", "first");
    tree_.Write("..2024_02_02/HKLM/Software/Value", "second");
    tree_.Link("..data", "..2024_01_01");
    tree_.Link("HKLM", "..data/HKLM");
    const Key key = Open(u"software");
    EXPECT_EQ(Read(key, u"Value"), u"[first]");
    std::filesystem::remove(tree_.Root() / "..data");
    tree_.Link("..data", "..2024_02_02");
    std::filesystem::remove_all(tree_.Root() / "..2024_01_01");
    EXPECT_EQ(Read(key, u"Value"), u"[second]");
}

// The machine's owner says where the tree is.
TEST_F(SettingsLinks, MayStandInThePlaceOfTheRoot) {
    const std::filesystem::path place = tree_.Root().string() + "-moved";
    std::filesystem::rename(tree_.Root(), place);
    std::filesystem::create_symlink(place, tree_.Root());
    EXPECT_EQ(Read(Open(u"K"), u"Value"), u"[inside]");
    std::filesystem::remove_all(place);
}

// What the kernel answers to the call, this many times.
WatchedFileCalls::Watcher Answering(int error, int times) {
    return [error, times](FileCall& call) mutable {
        if (call.name == "openat2" && times-- > 0) call.error = error;
    };
}
constexpr int Always = 1'000'000;

// So it is with kernels before 5.6, and in containers that forbid calls they do not know.
TEST_F(SettingsLinks, LeadAnywhereWhereTheKernelCannotBeToldOtherwise) {
    tree_.Link("HKLM/K/Out", PathBeside("Value"));
    tree_.Link("HKLM/K/Sub", PathBeside("Sub"));
    tree_.Link("HKLM/K/Dangling", "nowhere");
    for (const int error : {ENOSYS, EPERM}) {
        const WatchedFileCalls watched(Answering(error, Always));
        const Key key = Open(u"K");
        EXPECT_EQ(Read(key, u"VALUE"), u"[inside]");
        EXPECT_EQ(Read(key, u"Out"), u"[outside]");
        EXPECT_FALSE(Has(key, u"Dangling"));
        EXPECT_EQ(error_, 0U);
        EXPECT_EQ(SubKeys(key), Names{u"Sub"});
        EXPECT_EQ(Read(OpenBelow(key, u"Sub"), u"Value"), u"[outside]");
    }
}

TEST_F(SettingsLinks, AreFollowedAgainWhenTheKernelAsksForThat) {
    tree_.Link("HKLM/K/Link", "../K/Value");
    for (const int error : {EAGAIN, EINTR}) {
        const WatchedFileCalls watched(Answering(error, 3));
        EXPECT_EQ(Read(Open(u"K"), u"Link"), u"[inside]");
    }
    const WatchedFileCalls watched(Answering(EAGAIN, Always));
    EXPECT_EQ(Open(u"K"), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(EAGAIN));
}

}  // namespace
}  // namespace Conformance
