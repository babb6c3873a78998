// Calls for the log file that fail, answer oddly, or find an error number that was there before.
#include <fcntl.h>
#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <fstream>
#include <iterator>
#include <vector>

#include "ClosedStandardStreams.h"
#include "LogFileScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

namespace fs = std::filesystem;
using namespace SystemCalls;

long OpenDescriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class LogFileFault : public LogFileScene {
protected:
    // The error with which the log file cannot be opened, or 0.
    static unsigned int ErrorOf(const fs::path& path) {
        unsigned int error = 4711;
        const System::LogFile file = System::OpenLogFile(path.c_str(), error);
        EXPECT_EQ(file == System::NoLogFile, error != 0);
        System::CloseLogFile(file);
        return error;
    }
    static unsigned int ErrorAfter(int earlier, const fs::path& path) {
        errno = earlier;
        return ErrorOf(path);
    }
};

TEST_F(LogFileFault, OfOpeningIsTold) {
    for (const int error : {EPERM, EACCES, EMFILE, EROFS, ENAMETOOLONG, EOVERFLOW, EDQUOT}) {
        const FailingCall fails(SystemCall::Open, error);
        EXPECT_EQ(ErrorOf(path_), static_cast<unsigned int>(error));
    }
}

TEST_F(LogFileFault, OfASignalWhileOpeningIsNone) {
    const FailingCall fails(SystemCall::Open, EINTR, {.count = 3});
    EXPECT_EQ(ErrorOf(path_), 0U);
    EXPECT_EQ(fails.Seen(), 4U);
}

TEST_F(LogFileFault, FromBeforeIsNone) {
    const long before = OpenDescriptors();
    for (const int earlier : {EINTR, ELOOP, EACCES, ENOENT})
        EXPECT_EQ(ErrorAfter(earlier, path_), 0U) << earlier;
    EXPECT_EQ(OpenDescriptors(), before);
}

TEST_F(LogFileFault, FromBeforeIsNoneWithoutStandardStreams) {
    fs::create_symlink("log", folder_ / "link");
    unsigned int errors[4] = {};
    int inUse = 0;
    {
        const ClosedStandardStreams none;
        errors[0] = ErrorAfter(EINTR, path_);
        errors[1] = ErrorAfter(ELOOP, path_);
        errors[2] = ErrorAfter(0, folder_ / "link");
        errors[3] = ErrorAfter(ELOOP, folder_ / "link");
        inUse = ClosedStandardStreams::InUse();
    }
    for (const unsigned int error : errors)
        EXPECT_EQ(error, 0U);
    EXPECT_EQ(inUse, 0);
}

TEST_F(LogFileFault, OrNotWritesWaitForRoomWhateverNumberTheFileHas) {
    const System::LogFile files[] = {Open(), Open()};
    for (const System::LogFile file : files) {
        const int flags = ::fcntl(static_cast<int>(file), F_GETFL);
        EXPECT_EQ(flags & (O_NONBLOCK | O_APPEND), O_APPEND);
        System::CloseLogFile(file);
    }
}

// Programs that are started meanwhile get no descriptor.
TEST_F(LogFileFault, NothingIsOpenedForOtherPrograms) {
    fs::create_symlink("log", folder_ / "link");
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
    const HookedCall openat(SystemCall::Openat, [&](const Call& call) {
        look(call.Argument(2));
        return call.Make();
    });
    unsigned int error = 0;
    const System::LogFile file = System::OpenLogFile((folder_ / "link").c_str(), error);
    EXPECT_TRUE(Write(file, "half"));
    EXPECT_TRUE(System::EndsWithinLine(file));
    System::CloseLogFile(file);
    EXPECT_EQ(inherited, 0);
    EXPECT_GE(opened, 4);
}

using LogFileFaultInWriting = LogFileFault;

// What the system takes of each write in turn, a failure if negative, and after these all.
Hook Taking(std::vector<int> results, int error) {
    return [=, next = std::size_t{0}](const Call& call) mutable -> Word {
        if (next == results.size()) return call.Make();
        const int result = results[next++];
        if (result < 0) return call.Fail(-result);
        if (result > 0)
            return ::write(static_cast<int>(call.Argument(0)), call.Pointer<char>(1),
                           static_cast<std::size_t>(result));
        errno = error;
        return 0;
    };
}

TEST_F(LogFileFaultInWriting, OfTakingNothingIsOne) {
    for (const int earlier : {0, EAGAIN, EINTR}) {
        const System::LogFile file = Open();
        const HookedCall takes(SystemCall::Write, Taking({3, 0}, earlier));
        EXPECT_EQ(System::WriteLogFile(file, "record\n", 7), 3U) << earlier;
        EXPECT_EQ(takes.Seen(), 2U) << earlier;
        System::CloseLogFile(file);
    }
    const System::LogFile file = Open();
    const HookedCall takes(SystemCall::Write, Taking({0}, EINTR));
    EXPECT_EQ(System::WriteLogFile(file, "record\n", 7), 0U);
    System::CloseLogFile(file);
}

TEST_F(LogFileFaultInWriting, EndsTheRecord) {
    for (const int error : {EPERM, EIO, ENOSPC, EPIPE}) {
        const System::LogFile file = Open();
        const HookedCall takes(SystemCall::Write, Taking({3, -error}, 0));
        EXPECT_EQ(System::WriteLogFile(file, "record\n", 7), 3U) << error;
        System::CloseLogFile(file);
    }
}

// One that has been begun is completed, however little of it has been written.
TEST_F(LogFileFaultInWriting, OfRoomIsWaitedForInARecordOnly) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    {
        const HookedCall takes(SystemCall::Write, Taking({1, -EAGAIN, 2, -EAGAIN}, 0));
        EXPECT_TRUE(Write(ends[1], "record\n"));
    }
    const HookedCall takes(SystemCall::Write, Taking({-EAGAIN}, 0));
    EXPECT_EQ(System::WriteLogFile(ends[1], "lost\n", 5), 0U);
    char text[20] = {};
    EXPECT_EQ(::read(ends[0], text, sizeof text), 7);
    EXPECT_STREQ(text, "record\n");
    ::close(ends[0]);
    ::close(ends[1]);
}

// So that the records of several writers do not mix.
TEST_F(LogFileFaultInWriting, OrNotARecordIsOneCall) {
    const System::LogFile file = Open();
    const CountedCall writes(SystemCall::Write);
    EXPECT_TRUE(Write(file, "record\n"));
    EXPECT_TRUE(Write(file, ""));
    EXPECT_EQ(writes.Seen(), 1U);
    System::CloseLogFile(file);
}

class LogFileFaultInAPipe : public LogFileFault {
protected:
    void SetUp() override { ASSERT_EQ(::pipe2(ends_, O_CLOEXEC), 0); }
    void TearDown() override {
        ::close(ends_[0]);
        ::close(ends_[1]);
    }
    int ends_[2] = {};
};

// The signal that says that nobody reads stays consumed although another one interrupts that.
TEST_F(LogFileFaultInAPipe, WithoutAReaderRaisesNoSignalThoughAnotherComes) {
    ::close(ends_[0]);
    const FailingCall interrupted(SystemCall::Sigtimedwait, EINTR, {.count = 2});
    EXPECT_FALSE(Write(ends_[1], "text"));
    EXPECT_GE(interrupted.Seen(), 3U);
    sigset_t pending;
    ::sigpending(&pending);
    EXPECT_EQ(::sigismember(&pending, SIGPIPE), 0);
    ends_[0] = ::fcntl(ends_[1], F_DUPFD_CLOEXEC, 0);
}

TEST_F(LogFileFaultInAPipe, OrNotLeavesTheErrorNumberOfARecordThatIsWritten) {
    errno = 4711;
    EXPECT_TRUE(Write(ends_[1], "text"));
    EXPECT_EQ(errno, 4711);
}

// It would be another reader of it.
TEST_F(LogFileFaultInAPipe, IsNeverOpenedToBeRead) {
    EXPECT_TRUE(Write(ends_[1], "half"));
    const System::LogFile empty = Open();
    const CountedCall opened(SystemCall::Open);
    EXPECT_FALSE(System::EndsWithinLine(ends_[1]));
    EXPECT_FALSE(System::EndsWithinLine(empty));
    EXPECT_EQ(opened.Seen(), 0U);
    System::CloseLogFile(empty);
}

using LogFileFaultAtTheEnd = LogFileFault;

TEST_F(LogFileFaultAtTheEnd, OfAFileOfOneCharacterIsSeen) {
    const System::LogFile file = Open();
    Write(file, "x");
    EXPECT_TRUE(System::EndsWithinLine(file));
    System::CloseLogFile(file);
}

TEST_F(LogFileFaultAtTheEnd, NoneIsClosedThatIsNone) {
    const CountedCall closed(SystemCall::Close);
    System::CloseLogFile(System::NoLogFile);
    System::CloseLogFile(System::StandardError());
    EXPECT_EQ(closed.Seen(), 0U);
}

class LogFileFaultInLinks : public LogFileFault {
protected:
    LogFileFaultInLinks() { fs::create_symlink("log", link_); }

    const fs::path link_ = folder_ / "link";
};

TEST_F(LogFileFaultInLinks, IsTold) {
    const SystemCall calls[] = {SystemCall::Openat, SystemCall::Fstat, SystemCall::Readlinkat};
    for (const SystemCall which : calls) {
        const FailingCall fails(which, EIO, {.count = 1});
        EXPECT_EQ(ErrorOf(link_), static_cast<unsigned int>(EIO));
    }
    for (const SystemCall which : {SystemCall::Openat, SystemCall::Fstat}) {
        const FailingCall fails(which, EIO, {.first = 2, .count = 1});
        EXPECT_EQ(ErrorOf(link_), static_cast<unsigned int>(EIO));
    }
}

TEST_F(LogFileFaultInLinks, IsToldThoughClosingFailsToo) {
    fs::create_symlink("endless", folder_ / "endless");
    // The system frees the descriptor all the same.
    const HookedCall closes(SystemCall::Close, [](const Call& call) {
        call.Make();
        return call.Fail(EIO);
    });
    EXPECT_EQ(ErrorOf(folder_ / "endless"), static_cast<unsigned int>(ELOOP));
}

// As many as the system itself follows.
TEST_F(LogFileFaultInLinks, ComesAfterFortyOfThem) {
    constexpr int most = 40;
    fs::path next = "log";
    for (int count = 1; count <= most + 1; ++count) {
        const std::string name = "link" + std::to_string(count);
        fs::create_symlink(next, folder_ / name);
        next = name;
    }
    EXPECT_EQ(ErrorOf(folder_ / "link40"), 0U);
    EXPECT_EQ(ErrorOf(folder_ / "link41"), static_cast<unsigned int>(ELOOP));
}

// A path to the name in the folder, of the greatest length that the system takes.
std::string LongestPath(const fs::path& folder, const std::string& name) {
    const std::string start = folder.string() + "/";
    const std::size_t padding = PATH_MAX - 1 - start.size() - name.size();
    std::string path = start + (padding % 2 == 0 ? "" : "/");
    for (std::size_t count = 0; count < padding / 2; ++count)
        path += "./";
    return path + name;
}

TEST_F(LogFileFaultInLinks, IsNotTheLengthOfAPath) {
    const std::string target = LongestPath(folder_, "log");
    fs::create_symlink(target, folder_ / "first");
    EXPECT_EQ(target.size(), std::size_t{PATH_MAX - 1});
    EXPECT_EQ(ErrorOf(LongestPath(folder_, "first")), 0U);
    EXPECT_TRUE(fs::exists(path_));
}

class LogFileFaultInLinksOfOthers : public LogFileFaultInLinks {
protected:
    static constexpr uid_t Somebody = 54321;

    void SetUp() override {
        if (::geteuid() != 0) GTEST_SKIP() << "only root can make files that are others'";
    }
};

// Only the links in /proc are the kernel's own.
TEST_F(LogFileFaultInLinksOfOthers, IsNoneOfTheKernels) {
    fs::create_symlink("link", folder_ / "first");
    ASSERT_EQ(::chmod(folder_.c_str(), 0777), 0);
    ASSERT_EQ(::lchown(link_.c_str(), Somebody, Somebody), 0);
    for (const long kind : {long{PROC_SUPER_MAGIC} - 1, long{PROC_SUPER_MAGIC} + 1, 0L}) {
        const HookedCall told(SystemCall::Fstatfs, [kind](const Call& call) {
            call.Pointer<struct statfs>(1)->f_type = kind;
            return Word{0};
        });
        EXPECT_EQ(ErrorOf(folder_ / "first"), static_cast<unsigned int>(EACCES)) << kind;
    }
}

// A folder that may be entered but not listed.
TEST_F(LogFileFaultInLinksOfOthers, IsNotAFolderThatCannotBeRead) {
    ASSERT_EQ(::chmod(folder_.c_str(), 0711), 0);
    std::ofstream{path_};
    ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);
    ASSERT_EQ(::seteuid(Somebody), 0);
    const unsigned int error = ErrorOf(link_);
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(error, 0U);
}

}  // namespace
}  // namespace Conformance
