// What the scripts about the log file share: a folder for it, and its contents.
#pragma once

#include <Platform/System.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/TemporaryFolder.h"

namespace Conformance {

using Support::ContentsOf;

class LogFileScene : public testing::Test {
protected:
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

    const Support::TemporaryFolder temporary_;
    const std::filesystem::path folder_ = temporary_.Path();
    const std::filesystem::path path_ = folder_ / "log";
};

}  // namespace Conformance
