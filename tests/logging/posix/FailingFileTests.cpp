// Files that fail, and a ring that is written to a descriptor.
#include <VelLogging/RingSink.h>
#include <VelLogging/RotatingFileSink.h>
#include <VelLogging/StreamSink.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>
#include <support/TemporaryFolder.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <stdexcept>

namespace VelLoggingTests {
namespace {

using VelLogging::FileOptions;
using VelLogging::Format;
using VelLogging::RotatingFileSink;

class FailingFile : public testing::Test {
protected:
    std::string Path() const { return (folder_.Path() / "log").string(); }

    std::string WhyNot(const std::string& path) const {
        try {
            RotatingFileSink({path});
        } catch (const std::runtime_error& failure) {
            return std::string(failure.what()).substr(std::string(failure.what()).rfind(": "));
        }
        return "opened";
    }

private:
    const Support::TemporaryFolder folder_;
};

TEST_F(FailingFile, AFullDiskLosesRecordsAndNothingElse) {
    RotatingFileSink sink({"/dev/full"});
    EXPECT_NO_THROW(sink.Write(SampleRecord(u"lost")));
    EXPECT_NO_THROW(sink.Write(SampleRecord(u"lost")));
    EXPECT_EQ(sink.Lost(), 2U);
}

TEST_F(FailingFile, BehindAPartOfALineTheNextOneBegins) {
    RotatingFileSink sink({Path()});
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    rlimit lower = limit;
    lower.rlim_cur = 10;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &lower), 0);
    sink.Write(SampleRecord(u"a"));  // raises no signal
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    sink.Write(SampleRecord(u"b"));
    EXPECT_EQ(Support::ContentsOf(Path()),
              "2026-11-22\n2026-11-22T13:01:02.123456Z Network/Packet Trace: b\n");
    EXPECT_EQ(sink.Lost(), 1U);
}

TEST_F(FailingFile, WhatIsNoFileIsRefused) {
    EXPECT_EQ(WhyNot(std::filesystem::path(Path()).parent_path().string()), ": Is a directory");
    ASSERT_EQ(::mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(WhyNot(Path()), ": No such device or address");
    const std::string link = Path() + ".link";
    ASSERT_EQ(::symlink("/dev/null", link.c_str()), 0);
    EXPECT_EQ(WhyNot(link), ": it is a symbolic link");
}

TEST_F(FailingFile, ANewFileIsItsOwnersAlone) {
    RotatingFileSink sink({Path()});
    struct stat status = {};
    ASSERT_EQ(::stat(Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(FailingFile, APathThatIsGoneIsTriedWithEachRecord) {
    const std::string folder = Path() + ".d";
    std::filesystem::create_directory(folder);
    RotatingFileSink sink({folder + "/log"});
    std::filesystem::rename(folder, folder + ".away");
    sink.Reopen();
    sink.Write(SampleRecord(u"lost"));
    EXPECT_EQ(sink.Lost(), 1U);
    std::filesystem::create_directory(folder);
    sink.Write(SampleRecord(u"kept"));
    EXPECT_EQ(TextsOf(Support::ContentsOf(folder + "/log")), "kept|");
}

// Puts another file in the place of standard error.
class StandardError {
public:
    explicit StandardError(int descriptor) : kept_(::dup(STDERR_FILENO)) {
        ::dup2(descriptor, STDERR_FILENO);
    }
    ~StandardError() {
        ::dup2(kept_, STDERR_FILENO);
        ::close(kept_);
    }
    StandardError(const StandardError&) = delete;
    StandardError& operator=(const StandardError&) = delete;

private:
    int kept_;
};

TEST_F(FailingFile, APipeWithoutAReaderRaisesNoSignal) {
    std::array<int, 2> ends = {};
    ASSERT_EQ(::pipe(ends.data()), 0);
    VelLogging::StandardErrorSink sink(Format::Json);
    {
        const StandardError place(ends[1]);
        ::close(ends[1]);
        sink.Write(SampleRecord(u"a"));
        char bytes[512];
        const ssize_t count = ::read(ends[0], bytes, sizeof bytes);
        EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(count)).substr(0, 9), "{\"time\":\"");
        ::close(ends[0]);
        sink.Write(SampleRecord(u"lost"));
    }
    EXPECT_EQ(sink.Lost(), 1U);
}

TEST_F(FailingFile, ARingIsDumpedWithoutChangingTheErrorNumber) {
    VelLogging::RingSink ring(1000, Format::Plain);
    for (const char16_t* text : {u"a", u"b"})
        ring.Write(SampleRecord(text));
    const int file = ::open(Path().c_str(), O_CREAT | O_WRONLY, 0600);
    errno = ENOENT;
    EXPECT_TRUE(ring.Dump(file));
    EXPECT_FALSE(ring.Dump(-1));
    EXPECT_EQ(errno, ENOENT);
    ::close(file);
    EXPECT_EQ(Support::ContentsOf(Path()), ring.Lines());
    EXPECT_EQ(TextsOf(ring.Lines()), "a|b|");
}

}  // namespace
}  // namespace VelLoggingTests
