// The log file, looked at with the system's own means.
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>

#include "ClosedStandardStreams.h"
#include "LogFileScene.h"
#include "conformance/Provocation.h"

namespace Conformance {
namespace {

class LogFile : public LogFileScene {};

bool IsPending(int signal) {
    sigset_t pending;
    ::sigpending(&pending);
    return ::sigismember(&pending, signal) == 1;
}

bool IsBlocked(int signal) {
    sigset_t mask;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return ::sigismember(&mask, signal) == 1;
}

TEST_F(LogFile, IsItsOwnersOnly) {
    System::CloseLogFile(Open());
    struct stat status = {};
    ASSERT_EQ(::stat(path_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(LogFile, IsAppendedTo) {
    std::ofstream(path_) << "before\n";
    const System::LogFile first = Open();
    const System::LogFile second = Open();
    EXPECT_TRUE(Write(first, "one\n"));
    EXPECT_TRUE(Write(second, "two\n"));
    EXPECT_TRUE(Write(first, "three\n"));
    System::CloseLogFile(first);
    System::CloseLogFile(second);
    EXPECT_EQ(Contents(), "before\none\ntwo\nthree\n");
}

TEST_F(LogFile, IsNotInheritedByPrograms) {
    const System::LogFile file = Open();
    EXPECT_FALSE(IsInheritedByPrograms(static_cast<unsigned long long>(file)));
    System::CloseLogFile(file);
}

TEST_F(LogFile, ThatCannotBeOpenedTellsWhy) {
    unsigned int error = 0;
    EXPECT_EQ(System::OpenLogFile((path_ / "below").c_str(), error), System::NoLogFile);
    EXPECT_EQ(error, static_cast<unsigned int>(ENOENT));
    EXPECT_EQ(System::OpenLogFile(folder_.c_str(), error), System::NoLogFile);
    EXPECT_EQ(error, static_cast<unsigned int>(EISDIR));
}

TEST_F(LogFile, ThatIsNoneRefusesRecords) {
    EXPECT_FALSE(Write(System::NoLogFile, "text"));
    System::CloseLogFile(System::NoLogFile);
}

TEST_F(LogFile, TellsWhetherItEndsWithinALine) {
    const System::LogFile file = Open();
    EXPECT_FALSE(System::EndsWithinLine(file));
    for (const char* const text : {"record\n", "\n"}) {
        Write(file, text);
        EXPECT_FALSE(System::EndsWithinLine(file));
        Write(file, "half");
        EXPECT_TRUE(System::EndsWithinLine(file));
    }
    std::filesystem::rename(path_, folder_ / "moved");
    EXPECT_TRUE(System::EndsWithinLine(file));
    System::CloseLogFile(file);
    EXPECT_EQ(ContentsOf(folder_ / "moved"), "record\nhalf\nhalf");
    EXPECT_FALSE(System::EndsWithinLine(System::NoLogFile));
}

TEST_F(LogFile, StandardErrorStaysOpen) {
    System::CloseLogFile(System::StandardError());
    EXPECT_TRUE(Write(System::StandardError(), ""));
    EXPECT_GE(::fcntl(STDERR_FILENO, F_GETFD), 0);
}

TEST_F(LogFile, NeverTakesTheNumberOfAClosedStandardStream) {
    System::LogFile file = System::NoLogFile;
    int whileOpen = 0;
    int afterwards = 0;
    {
        const ClosedStandardStreams none;
        unsigned int error = 0;
        file = System::OpenLogFile(path_.c_str(), error);
        whileOpen = ClosedStandardStreams::InUse();
        Write(file, "record");
        System::CloseLogFile(file);
        afterwards = ClosedStandardStreams::InUse();
    }
    EXPECT_GT(static_cast<int>(file), STDERR_FILENO);
    EXPECT_EQ(whileOpen, 0);
    EXPECT_EQ(afterwards, 0);
    EXPECT_LT(::fcntl(static_cast<int>(file), F_GETFD), 0);
    EXPECT_EQ(Contents(), "record");
}

TEST_F(LogFile, NeverTakesTheNumberOfTheOneStandardStreamThatIsClosed) {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int kept = ::fcntl(stream, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
        ::close(stream);
        unsigned int error = 0;
        const System::LogFile file = System::OpenLogFile(path_.c_str(), error);
        const bool isFree = ::fcntl(stream, F_GETFD) < 0;
        System::CloseLogFile(file);
        ::dup2(kept, stream);
        ::close(kept);
        EXPECT_TRUE(isFree) << stream;
        EXPECT_GT(static_cast<int>(file), STDERR_FILENO);
    }
}

// The reader that comes after a while would let a waiting open succeed.
TEST_F(LogFile, ThatIsAPipeWithoutAReaderIsNotWaitedFor) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    int reader = -1;
    unsigned int error = 0;
    System::LogFile file = System::NoLogFile;
    {
        const SignalStorm storm([&] { reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK); });
        file = System::OpenLogFile(path_.c_str(), error);
    }
    EXPECT_EQ(file, System::NoLogFile);
    EXPECT_EQ(error, static_cast<unsigned int>(ENXIO));
    System::CloseLogFile(file);
    if (reader >= 0) ::close(reader);
}

TEST_F(LogFile, ThatIsAPipeWithAReaderWaitsForItsRoom) {
    ASSERT_EQ(::mkfifo(path_.c_str(), 0600), 0);
    const int reader = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    const System::LogFile file = Open();
    const int mode = ::fcntl(static_cast<int>(file), F_GETFL);
    EXPECT_EQ(mode & O_NONBLOCK, 0);
    EXPECT_EQ(mode & O_APPEND, O_APPEND);
    Write(file, "half");
    EXPECT_FALSE(System::EndsWithinLine(file));
    System::CloseLogFile(file);
    ::close(reader);
}

struct CancelledRecord {
    const char* path;
    bool written;
    bool endsWithinLine;

    // A thread's function.
    static void* Run(void* argument) {
        ::pthread_cancel(::pthread_self());
        static_cast<CancelledRecord*>(argument)->Write();
        ::pthread_testcancel();
        return nullptr;
    }

    // Not part of the function that the cancellation ends: the address sanitizer would go on
    // guarding that one's variables.
    [[gnu::noinline]] void Write() {
        unsigned int error = 0;
        const System::LogFile file = System::OpenLogFile(path, error);
        written = System::WriteLogFile(file, "record", 6) == 6;
        endsWithinLine = System::EndsWithinLine(file);
        System::CloseLogFile(file);
    }
};

TEST_F(LogFile, AThreadThatIsBeingCancelledWritesItsRecordStill) {
    CancelledRecord scene = {.path = path_.c_str(), .written = false, .endsWithinLine = false};
    pthread_t thread = {};
    ASSERT_EQ(::pthread_create(&thread, nullptr, CancelledRecord::Run, &scene), 0);
    void* end = nullptr;
    ASSERT_EQ(::pthread_join(thread, &end), 0);
    EXPECT_EQ(end, PTHREAD_CANCELED);
    EXPECT_TRUE(scene.written);
    EXPECT_TRUE(scene.endsWithinLine);
    EXPECT_EQ(Contents(), "record");
}

class LogFileBrokenPipe : public LogFile {
protected:
    void SetUp() override {
        ASSERT_EQ(::pipe2(ends_, O_CLOEXEC), 0);
        ::close(ends_[0]);
    }
    void TearDown() override { ::close(ends_[1]); }
    int ends_[2] = {};
};

TEST_F(LogFileBrokenPipe, RefusesRecordsWithoutASignal) {
    EXPECT_FALSE(Write(ends_[1], "text"));
    EXPECT_FALSE(IsPending(SIGPIPE));
    EXPECT_FALSE(IsBlocked(SIGPIPE));
}

TEST_F(LogFileBrokenPipe, LeavesTheHostsPendingSignalAndMaskAlone) {
    sigset_t pipe;
    sigset_t former;
    ::sigemptyset(&pipe);
    ::sigaddset(&pipe, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe, &former);
    ::pthread_kill(::pthread_self(), SIGPIPE);
    EXPECT_FALSE(Write(ends_[1], "text"));
    EXPECT_TRUE(IsPending(SIGPIPE));
    EXPECT_TRUE(IsBlocked(SIGPIPE));
    const timespec atOnce = {};
    EXPECT_EQ(::sigtimedwait(&pipe, nullptr, &atOnce), SIGPIPE);
    ::pthread_sigmask(SIG_SETMASK, &former, nullptr);
}

// A standard error that somebody made non-blocking, for one.
class LogFileNonBlockingPipe : public LogFile {
protected:
    void SetUp() override {
        int ends[2];
        ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
        reader_ = ends[0];
        writer_ = ends[1];
        ASSERT_EQ(::fcntl(writer_, F_SETFL, O_NONBLOCK), 0);
    }
    void TearDown() override {
        ::close(reader_);
        if (writer_ >= 0) ::close(writer_);
    }
    std::size_t Fill() const {
        std::size_t filled = 0;
        while (::write(writer_, "x", 1) == 1)
            ++filled;
        return filled;
    }
    std::string ReadAll() {
        std::string text;
        char part[4096];
        for (ssize_t count = 1; count > 0; text.append(part, static_cast<std::size_t>(count))) {
            count = std::max(::read(reader_, part, sizeof part), ssize_t{0});
        }
        return text;
    }

    int reader_ = -1;
    int writer_ = -1;
};

TEST_F(LogFileNonBlockingPipe, TakesARecordWholeThoughItHasNoRoomForIt) {
    const std::string record(300'000, 'r');
    bool written = false;
    std::thread writer([&] {
        written = Write(writer_, record);
        ::close(writer_);
    });
    const std::string text = ReadAll();
    writer.join();
    writer_ = -1;
    EXPECT_TRUE(written);
    EXPECT_EQ(text, record);
}

TEST_F(LogFileNonBlockingPipe, ThatIsFullLosesARecordWhole) {
    const std::size_t filled = Fill();
    EXPECT_FALSE(Write(writer_, "lost"));
    ::close(writer_);
    writer_ = -1;
    EXPECT_EQ(ReadAll(), std::string(filled, 'x'));
}

TEST_F(LogFile, ARecordIsWrittenWholeInSpiteOfSignals) {
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    const std::string record(4U << 20U, 'x');
    std::atomic<bool> start = false;
    std::size_t total = 0;
    std::thread reader([&] {
        start.wait(false);
        char buffer[65536];
        ssize_t count = 0;
        while ((count = ::read(ends[0], buffer, sizeof buffer)) > 0) {
            total += static_cast<std::size_t>(count);
        }
    });
    {
        const SignalStorm storm([&] {
            start = true;
            start.notify_one();
        });
        EXPECT_TRUE(Write(ends[1], record));
    }
    ::close(ends[1]);
    reader.join();
    ::close(ends[0]);
    EXPECT_EQ(total, record.size());
}

}  // namespace
}  // namespace Conformance
