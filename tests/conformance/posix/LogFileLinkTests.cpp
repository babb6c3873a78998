// Links that stand in the place of the log file.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "LogFileScene.h"

namespace Conformance {
namespace {

namespace fs = std::filesystem;

constexpr uid_t Root = 0;
constexpr uid_t Somebody = 54321;
constexpr uid_t SomebodyElse = 54322;

class LogFileLinks : public LogFileScene {
protected:
    // The error that the log file at the path is refused with; else it gets a record.
    static unsigned int Log(const fs::path& path) {
        unsigned int error = 4711;
        const System::LogFile file = System::OpenLogFile(path.c_str(), error);
        EXPECT_EQ(file == System::NoLogFile, error != 0);
        Write(file, "record\n");
        System::CloseLogFile(file);
        return error;
    }

    const fs::path link_ = folder_ / "link";
    const fs::path target_ = folder_ / "target";
};

TEST_F(LogFileLinks, LeadToTheFileInAFolderOfOnesOwn) {
    fs::create_symlink("target", link_);
    EXPECT_EQ(Log(link_), 0U);
    EXPECT_EQ(Log(link_), 0U);
    EXPECT_EQ(ContentsOf(target_), "record\nrecord\n");
    struct stat status = {};
    ASSERT_EQ(::stat(target_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(LogFileLinks, LeadFromOneToTheNext) {
    fs::create_directories(folder_ / "deep" / "deeper");
    fs::create_symlink("deep/first", link_);
    fs::create_symlink(folder_ / "deep/deeper/second", folder_ / "deep/first");
    fs::create_symlink("../../target", folder_ / "deep/deeper/second");
    EXPECT_EQ(Log(link_), 0U);
    EXPECT_EQ(ContentsOf(target_), "record\n");
}

TEST_F(LogFileLinks, LeadThereFromAnyWorkingFolder) {
    fs::create_symlink("target", link_);
    const fs::path former = fs::current_path();
    fs::current_path(folder_);
    EXPECT_EQ(Log("link"), 0U);
    EXPECT_EQ(Log("./link"), 0U);
    EXPECT_EQ(Log("target"), 0U);
    fs::current_path(former);
    EXPECT_EQ(ContentsOf(target_), "record\nrecord\nrecord\n");
}

TEST_F(LogFileLinks, ThatLeadNowhereTellWhy) {
    fs::create_symlink("link", link_);
    EXPECT_EQ(Log(link_), static_cast<unsigned int>(ELOOP));
    fs::create_symlink("missing/target", folder_ / "dangling");
    EXPECT_EQ(Log(folder_ / "dangling"), static_cast<unsigned int>(ENOENT));
    fs::create_symlink(".", folder_ / "folder");
    EXPECT_EQ(Log(folder_ / "folder"), static_cast<unsigned int>(EISDIR));
}

// As /dev/stdout and /dev/stderr do.
TEST_F(LogFileLinks, OfTheKernelLeadToWhatIsOpen) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    fs::create_symlink("/proc/self/fd/" + std::to_string(ends[1]), link_);
    EXPECT_EQ(Log(link_), 0U);
    char text[8] = {};
    EXPECT_EQ(::read(ends[0], text, sizeof text), 7);
    EXPECT_STREQ(text, "record\n");
    ::close(ends[0]);
    ::close(ends[1]);
}

// A link that stands in a folder.
struct Owners {
    uid_t folder;
    mode_t mode;
    uid_t link;
};

// Lets the process act as the user for its lifetime.
class ActingAs {
public:
    explicit ActingAs(uid_t user) { EXPECT_EQ(::seteuid(user), 0); }
    ~ActingAs() { EXPECT_EQ(::seteuid(Root), 0); }
    ActingAs(const ActingAs&) = delete;
    ActingAs& operator=(const ActingAs&) = delete;
};

class LogFileLinksOfOthers : public LogFileLinks {
protected:
    void SetUp() override {
        if (::geteuid() != Root) GTEST_SKIP() << "only root can make files that are others'";
        fs::create_symlink("target", link_);
    }

    unsigned int LogThroughLink(const Owners& owners, uid_t user = Root) {
        EXPECT_EQ(::chmod(folder_.c_str(), owners.mode), 0);
        EXPECT_EQ(::chown(folder_.c_str(), owners.folder, owners.folder), 0);
        EXPECT_EQ(::lchown(link_.c_str(), owners.link, owners.link), 0);
        fs::remove(target_);
        const ActingAs acting(user);
        return Log(link_);
    }
    void ExpectRefused(const Owners& owners) {
        EXPECT_EQ(LogThroughLink(owners), static_cast<unsigned int>(EACCES));
        EXPECT_FALSE(fs::exists(target_));
    }
    void ExpectFollowed(const Owners& owners) {
        EXPECT_EQ(LogThroughLink(owners), 0U);
        EXPECT_EQ(ContentsOf(target_), "record\n");
    }
};

TEST_F(LogFileLinksOfOthers, AreNotFollowedInFoldersThatOthersMayWrite) {
    for (const mode_t mode : {01777U, 0777U, 0770U, 0775U, 0757U, 03775U}) {
        ExpectRefused({Root, mode, Somebody});
        ExpectRefused({Somebody, mode, Somebody});
    }
    for (const mode_t mode : {0755U, 0700U}) {
        ExpectRefused({Somebody, mode, Somebody});
        ExpectRefused({Somebody, mode, SomebodyElse});
    }
}

TEST_F(LogFileLinksOfOthers, AreFollowedWhereOthersCannotHaveMadeThem) {
    ExpectFollowed({Root, 0755, Somebody});
    ExpectFollowed({Root, 0700, Somebody});
    for (const mode_t mode : {01777U, 0777U, 0770U, 0775U}) {
        ExpectFollowed({Root, mode, Root});
        ExpectFollowed({Somebody, mode, Root});
    }
}

TEST_F(LogFileLinksOfOthers, AreNotFollowedByAUserWhoMayFollowItsOwnAndRoots) {
    for (const uid_t trusted : {Somebody, Root}) {
        EXPECT_EQ(LogThroughLink({Root, 01777, trusted}, Somebody), 0U) << trusted;
        EXPECT_EQ(ContentsOf(target_), "record\n");
    }
    // The kernel itself refuses some in folders with the sticky bit.
    for (const mode_t mode : {01777U, 0777U}) {
        for (const uid_t other : {SomebodyElse, Somebody - 1}) {
            EXPECT_EQ(LogThroughLink({Root, mode, other}, Somebody),
                      static_cast<unsigned int>(EACCES));
            EXPECT_FALSE(fs::exists(target_));
        }
    }
}

TEST_F(LogFileLinksOfOthers, AreNotFollowedFromATrustedLink) {
    const fs::path trusted = folder_.string() + "-trusted";
    fs::create_directory(trusted);
    fs::create_symlink(link_, trusted / "log");
    for (const mode_t mode : {01777U, 0777U}) {
        EXPECT_EQ(LogThroughLink({Root, mode, Root}), 0U);
        EXPECT_EQ(LogThroughLink({Root, mode, Somebody}), static_cast<unsigned int>(EACCES));
        EXPECT_EQ(Log(trusted / "log"), static_cast<unsigned int>(EACCES));
        EXPECT_FALSE(fs::exists(target_));
    }
    fs::remove_all(trusted);
}

}  // namespace
}  // namespace Conformance
