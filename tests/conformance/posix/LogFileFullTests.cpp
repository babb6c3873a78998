// A log file that has no room any more.
#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <csignal>

#include "FileCalls.h"
#include "LogFileScene.h"

namespace Conformance {
namespace {

class LogFileFull : public LogFileScene {
protected:
    // How much the file takes.
    static std::size_t Write(System::LogFile file, const std::string& text) {
        return System::WriteLogFile(file, text.data(), text.size());
    }
};

// Files of the process may grow to this many bytes.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes) {
        ::getrlimit(RLIMIT_FSIZE, &former_);
        const rlimit limit = {.rlim_cur = bytes, .rlim_max = former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit() { ::setrlimit(RLIMIT_FSIZE, &former_); }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    rlimit former_ = {};
};

TEST_F(LogFileFull, TakesWhatThereIsRoomForWithoutASignal) {
    const System::LogFile file = Open();
    {
        const SizeLimit limit(10);
        EXPECT_EQ(Write(file, "first\n"), 6U);
        EXPECT_EQ(Write(file, "second\n"), 4U);
        EXPECT_TRUE(System::EndsWithinLine(file));
        EXPECT_EQ(Write(file, "third\n"), 0U);
        sigset_t pending;
        ::sigpending(&pending);
        EXPECT_EQ(::sigismember(&pending, SIGXFSZ), 0);
    }
    EXPECT_EQ(Write(file, "\nfourth\n"), 8U);
    System::CloseLogFile(file);
    EXPECT_EQ(Contents(), "first\nseco\nfourth\n");
}

// What the disk takes of the first write; all later ones fail.
WatchedFileCalls::Watcher Taking(std::size_t bytes, int error) {
    return [=, calls = 0](FileCall& call) mutable {
        if (call.name != "write") return;
        if (calls++ == 0)
            call.bytes = bytes;
        else
            call.error = error;
    };
}

TEST_F(LogFileFull, TellsHowMuchItTookBeforeItFailed) {
    for (const int error : {ENOSPC, EFBIG, EDQUOT, EIO}) {
        const System::LogFile file = Open();
        const WatchedFileCalls watched(Taking(3, error));
        EXPECT_EQ(Write(file, "record\n"), 3U);
        EXPECT_EQ(Write(file, "record\n"), 0U);
        EXPECT_TRUE(System::EndsWithinLine(file));
        System::CloseLogFile(file);
    }
    EXPECT_EQ(Contents(), "recrecrecrec");
}

TEST_F(LogFileFull, IsTriedAgainAfterASignal) {
    const System::LogFile file = Open();
    {
        const WatchedFileCalls watched([calls = 0](FileCall& call) mutable {
            if (call.name != "write") return;
            call.bytes = std::min(call.bytes, std::size_t{2});
            if (calls++ % 2 == 0) call.error = EINTR;
        });
        EXPECT_EQ(Write(file, "record\n"), 7U);
    }
    System::CloseLogFile(file);
    EXPECT_EQ(Contents(), "record\n");
}

}  // namespace
}  // namespace Conformance
