// What the scripts about the log file share: a folder for it, and its contents.
#pragma once

#include <Platform/System.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace Conformance {

class LogFileScene : public testing::Test {
protected:
    LogFileScene() {
        std::string folder = (std::filesystem::temp_directory_path() / "logXXXXXX").string();
        if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("mkdtemp");
        folder_ = folder;
        path_ = folder_ / "log";
    }
    ~LogFileScene() override { std::filesystem::remove_all(folder_); }

    System::LogFile Open() const {
        unsigned int error = 4711;
        const System::LogFile file = System::OpenLogFile(path_.c_str(), error);
        EXPECT_NE(file, System::NoLogFile);
        EXPECT_EQ(error, 0U);
        return file;
    }
    static bool Write(System::LogFile file, const std::string& text) {
        return System::WriteLogFile(file, text.data(), text.size()) == text.size();
    }
    std::string Contents() const { return ContentsOf(path_); }
    static std::string ContentsOf(const std::filesystem::path& path) {
        std::ifstream stream(path);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::filesystem::path folder_;
    std::filesystem::path path_;
};

}  // namespace Conformance
