// Files that are kept below a size and followed when they are moved.
#include <VelLogging/RotatingFileSink.h>
#include <gtest/gtest.h>
#include <logging/SampleRecords.h>
#include <support/TemporaryFolder.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace VelLoggingTests {
namespace {

using VelLogging::FileOptions;
using VelLogging::Format;
using VelLogging::RotatingFileSink;

// A line of one character.
constexpr unsigned long long LineLength = 52;
constexpr long long Second = 1'000'000;

class RotatingFile : public testing::Test {
protected:
    std::string Path(const char* ending = "") const {
        return (folder_.Path() / "log").string() + ending;
    }
    std::string Texts(const char* ending = "") const {
        return TextsOf(Support::ContentsOf(Path(ending)));
    }
    FileOptions Options(unsigned long long size = 0, unsigned int kept = 5) const {
        return {Path(), Format::Plain, size, kept};
    }

private:
    const Support::TemporaryFolder folder_;
};

TEST_F(RotatingFile, ALineThatJustFitsStays) {
    RotatingFileSink sink(Options(2 * LineLength));
    for (const char16_t* text : {u"a", u"b", u"c"})
        sink.Write(SampleRecord(text));
    EXPECT_EQ(Texts(".1"), "a|b|");
    EXPECT_EQ(std::filesystem::file_size(Path(".1")), 2 * LineLength);
    EXPECT_EQ(Texts(), "c|");
}

TEST_F(RotatingFile, OneByteTooMuchGoesToTheNextFile) {
    RotatingFileSink sink(Options(2 * LineLength - 1));
    for (const char16_t* text : {u"a", u"b"})
        sink.Write(SampleRecord(text));
    EXPECT_EQ(Texts(".1"), "a|");
    EXPECT_EQ(Texts(), "b|");
}

TEST_F(RotatingFile, OldFilesMoveOnAndTheOldestEnds) {
    RotatingFileSink sink(Options(LineLength, 2));
    for (const char16_t* text : {u"a", u"b", u"c", u"d"})
        sink.Write(SampleRecord(text));
    EXPECT_EQ(Texts(), "d|");
    EXPECT_EQ(Texts(".1"), "c|");
    EXPECT_EQ(Texts(".2"), "b|");
    EXPECT_FALSE(std::filesystem::exists(Path(".3")));
    EXPECT_EQ(sink.Lost(), 0U);
}

TEST_F(RotatingFile, WithNoneKeptTheFileBeginsAgain) {
    RotatingFileSink sink(Options(LineLength, 0));
    for (const char16_t* text : {u"a", u"b"})
        sink.Write(SampleRecord(text));
    EXPECT_EQ(Texts(), "b|");
    EXPECT_FALSE(std::filesystem::exists(Path(".1")));
}

TEST_F(RotatingFile, ALongLineHasAFileOfItsOwn) {
    RotatingFileSink sink(Options(LineLength));
    sink.Write(SampleRecord(u"long"));
    sink.Write(SampleRecord(u"a"));
    EXPECT_EQ(Texts(".1"), "long|");
    EXPECT_EQ(Texts(), "a|");
}

TEST_F(RotatingFile, WhatAFileHasAlreadyCounts) {
    RotatingFileSink(Options()).Write(SampleRecord(u"a"));
    RotatingFileSink sink(Options(LineLength));
    sink.Write(SampleRecord(u"b"));
    EXPECT_EQ(Texts(".1"), "a|");
    EXPECT_EQ(Texts(), "b|");
}

TEST_F(RotatingFile, AFileThatEndsWithinALineIsGoneOnWithANewOne) {
    std::ofstream(Path()) << "cut";
    RotatingFileSink(Options()).Write(SampleRecord(u"a"));
    EXPECT_EQ(Texts(), "cut|a|");
}

TEST_F(RotatingFile, ReopenGoesToWhatIsAtThePath) {
    RotatingFileSink sink(Options());
    sink.Write(SampleRecord(u"a"));
    std::filesystem::rename(Path(), Path(".moved"));
    sink.Reopen();
    sink.Write(SampleRecord(u"b"));
    EXPECT_EQ(Texts(".moved"), "a|");
    EXPECT_EQ(Texts(), "b|");
}

TEST_F(RotatingFile, AMoveIsNoticedASecondLater) {
    RotatingFileSink sink(Options());
    sink.Write(SampleRecord(u"a"));
    std::filesystem::rename(Path(), Path(".moved"));
    sink.Write(SampleRecord(u"b", 0, "Error", SampleTime + Second - 1));
    sink.Write(SampleRecord(u"c", 0, "Error", SampleTime + Second));
    EXPECT_EQ(Texts(".moved"), "a|b|");
    EXPECT_EQ(Texts(), "c|");
}

TEST_F(RotatingFile, AFileThatCannotBeOpenedIsToldWithPathAndReason) {
    const std::string path = Path("/none");
    try {
        RotatingFileSink({path});
        FAIL() << "was opened";
    } catch (const std::runtime_error& failure) {
        EXPECT_EQ(std::string(failure.what()).find("cannot open the log file " + path + ": "), 0U);
    }
}

}  // namespace
}  // namespace VelLoggingTests
