// A log whose file has no room any more for a while.
#include <VelLog/FileSink.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Loopback {
namespace {

class FullDisk : public testing::Test {
protected:
    FullDisk() {
        std::string folder = (std::filesystem::temp_directory_path() / "logXXXXXX").string();
        if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("mkdtemp");
        folder_ = folder;
        path_ = folder_ / "log";
        ::getrlimit(RLIMIT_FSIZE, &former_);
    }
    ~FullDisk() override {
        SetRoom(former_.rlim_cur);
        std::filesystem::remove_all(folder_);
    }

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
    std::string Contents() const {
        std::ifstream stream(path_);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const std::string line_ = "1970-01-01T00:00:00.000000Z Network/Error: text\n";
    std::filesystem::path folder_;
    std::filesystem::path path_;

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
