// What stands in the settings tree besides plain files and folders, and how it is looked at.
#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <iterator>

#include "ClosedStandardStreams.h"
#include "SettingsScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;
using Names = std::vector<std::u16string>;

long OpenDescriptors() {
    namespace fs = std::filesystem;
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// A key with an entry of each kind.
class SettingsEntry : public SettingsKeys {
protected:
    SettingsEntry() {
        tree_.Write("HKLM/K/Value", "text");
        tree_.Write("HKLM/K/Sub/Value", "text");
        tree_.Link("HKLM/K/LinkToSub", "Sub");
        tree_.Link("HKLM/K/LinkToValue", "Value");
        tree_.MakePipe("HKLM/K/Pipe");
        tree_.MakeSocket("HKLM/K/Socket");
    }

    void ExpectFoldersAsKeys() {
        EXPECT_EQ(SubKeys(Open(u"K")), (Names{u"LinkToSub", u"Sub"}));
        EXPECT_EQ(error_, 0U);
    }
};

TEST_F(SettingsEntry, IsAKeyIfItIsAFolder) {
    ExpectFoldersAsKeys();
}

// Not every file system tells it with the name.
TEST_F(SettingsEntry, IsAKeyIfItIsAFolderThoughTheListingDoesNotSaySo) {
    const HookedCall listed(SystemCall::Readdir, [](const Call& call) {
        const Word result = call.Make();
        if (auto* const entry = reinterpret_cast<dirent*>(result)) entry->d_type = DT_UNKNOWN;
        return result;
    });
    ExpectFoldersAsKeys();
}

// An error number from before says nothing of a folder that is gone while it is listed.
TEST_F(SettingsEntry, IsNoneInAFolderThatIsGone) {
    const Key key = Open(u"K");
    const HookedCall opened(SystemCall::Fdopendir, [](const Call& call) {
        const Word result = call.Make();
        errno = EIO;
        return result;
    });
    const HookedCall listed(SystemCall::Readdir, [](const Call&) { return Word{0}; });
    EXPECT_EQ(SubKeys(key), Names{});
    EXPECT_EQ(error_, 0U);
}

TEST_F(SettingsEntry, ThatCannotBeReadIsNotReplacedByOneThatDiffersInCase) {
    tree_.Write("HKLM/K/OUT", "another");
    tree_.Link("HKLM/K/Out", "/etc/passwd");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"Out"), u"none");
    EXPECT_EQ(error_, static_cast<unsigned int>(EXDEV));
    EXPECT_EQ(Read(key, u"OUT"), u"[another]");
}

// Half a pair of surrogates is no name; the file is named by the character that stands in for it.
TEST_F(SettingsEntry, IsNotNamedByHalfAPairOfSurrogates) {
    tree_.Write("HKLM/K/\xEF\xBF\xBD", "replacement");
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"\uFFFD"), u"[replacement]");
    EXPECT_EQ(Read(key, std::u16string(1, 0xD800)), u"none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(SettingsEntry, AtTheTopIsTheHiveItself) {
    EXPECT_NE(Open(u""), nullptr);
    EXPECT_EQ(error_, 0U);
}

TEST_F(SettingsEntry, IsMissingWhereTheTreeIsAFileOrAPipe) {
    std::filesystem::remove_all(tree_.Root());
    tree_.Write("../" + tree_.Root().filename().string(), "text");
    EXPECT_EQ(Open(u"K"), nullptr);
    EXPECT_EQ(error_, 0U);
    std::filesystem::remove(tree_.Root());
    ASSERT_EQ(::mkfifo(tree_.Root().c_str(), 0600), 0);
    EXPECT_EQ(Open(u"K"), nullptr);
    EXPECT_EQ(error_, 0U);
}

constexpr int EarlierErrors[] = {EAGAIN, EINTR, EPERM, ENOSYS, EIO};

TEST_F(SettingsEntry, IsOpenedOnceWhateverErrorCameBefore) {
    const Key key = Open(u"K");
    for (const int earlier : EarlierErrors) {
        const long before = OpenDescriptors();
        const CountedCall beneath(SystemCall::Syscall, {.option = SYS_openat2});
        const CountedCall plain(SystemCall::Openat);
        errno = earlier;
        EXPECT_EQ(Read(key, u"Value"), u"[text]");
        EXPECT_EQ(beneath.Seen(), 1U) << earlier;
        EXPECT_EQ(plain.Seen(), 0U) << earlier;
        EXPECT_EQ(OpenDescriptors(), before) << earlier;
    }
}

TEST_F(SettingsEntry, IsOpenedOnceWithoutStandardStreams) {
    const Key key = Open(u"K");
    std::u16string texts[std::size(EarlierErrors)];
    int inUse = 0;
    {
        const ClosedStandardStreams none;
        for (std::size_t index = 0; index < std::size(EarlierErrors); ++index) {
            errno = EarlierErrors[index];
            texts[index] = Read(key, u"Value");
        }
        inUse = ClosedStandardStreams::InUse();
    }
    for (const std::u16string& text : texts)
        EXPECT_EQ(text, u"[text]");
    EXPECT_EQ(inUse, 0);
}

// A program that is started meanwhile does not get it.
TEST_F(SettingsEntry, IsNotOpenedForOtherPrograms) {
    int opened = 0;
    int inherited = 0;
    const auto look = [&](Word flags) {
        ++opened;
        if ((flags & O_CLOEXEC) == 0) ++inherited;
    };
    const HookedCall open(SystemCall::Open, [&](const Call& call) {
        look(call.Argument(1));
        return call.Make();
    });
    const HookedCall beneath(SystemCall::Syscall,
                             [&](const Call& call) {
                                 look(static_cast<Word>(call.Pointer<open_how>(3)->flags));
                                 return call.Make();
                             },
                             {.option = SYS_openat2});
    const Key key = Open(u"K");
    EXPECT_EQ(Read(key, u"VALUE"), u"[text]");
    EXPECT_EQ(SubKeys(key).size(), 2U);
    EXPECT_GE(opened, 5);
    EXPECT_EQ(inherited, 0);
}

}  // namespace
}  // namespace Conformance
