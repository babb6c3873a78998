// A log whose file has no room any more for a while.
#include <VelLog/FileSink.h>
#include <gtest/gtest.h>
#include <support/TemporaryFolder.h>
#include <sys/resource.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace Loopback {
namespace {

class FullDisk : public testing::Test {
protected:
    FullDisk() { ::getrlimit(RLIMIT_FSIZE, &former_); }
    ~FullDisk() override { SetRoom(former_.rlim_cur); }

    void SetRoom(rlim_t bytes) const {
        const rlimit limit = {.rlim_cur = bytes, .rlim_max = former_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    void SetRoomFor(std::uintmax_t moreBytes) const {
        SetRoom(std::filesystem::file_size(path_) + moreBytes);
    }
    void EndShortage() const { SetRoom(former_.rlim_cur); }

    static void Write(VelLog::FileSink& sink) {
        const unsigned short text[] = {'t', 'e', 'x', 't', 0};
        sink.Write({"Network", "Error", text, 0});
    }
    std::string Contents() const { return Support::ContentsOf(path_); }

    const std::string line_ = "1970-01-01T00:00:00.000000Z Network/Error: text\n";
    const Support::TemporaryFolder folder_;
    const std::filesystem::path path_ = folder_.Path() / "log";

private:
    rlimit former_ = {};
};

TEST_F(FullDisk, CutsARecordThatTheNextOneIsNotGluedTo) {
    VelLog::FileSink sink(path_.c_str());
    Write(sink);
    SetRoomFor(10);
    Write(sink);
    Write(sink);
    EndShortage();
    Write(sink);
    Write(sink);
    EXPECT_EQ(Contents(), line_ + "1970-01-01\n" + line_ + line_);
}

TEST_F(FullDisk, CutsARecordThatTheNextProcesssIsNotGluedTo) {
    {
        VelLog::FileSink sink(path_.c_str());
        SetRoomFor(10);
        Write(sink);
    }
    EndShortage();
    VelLog::FileSink sink(path_.c_str());
    Write(sink);
    EXPECT_EQ(Contents(), "1970-01-01\n" + line_);
}

}  // namespace
}  // namespace Loopback
