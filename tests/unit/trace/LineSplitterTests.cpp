// Lines at the ends of blocks, without an end, and far too long.
#include "velsock-trace/LineSplitter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using namespace VelSockTrace;

// Gives out a text in pieces of one size.
LineSplitter Splitter(const std::string& text, std::size_t piece,
                      std::size_t limit = LineSplitter::UsualLimit) {
    return LineSplitter(
        [text, piece, position = std::size_t{0}](char* buffer, std::size_t size) mutable {
            const std::size_t count = std::min({size, piece, text.size() - position});
            std::copy_n(text.data() + position, count, buffer);
            position += count;
            return count;
        },
        limit);
}

std::vector<std::string> Lines(LineSplitter splitter) {
    std::vector<std::string> lines;
    while (const auto line = splitter.Next())
        lines.push_back((line->isCut ? "cut:" : "") + std::string(line->text));
    if (const auto rest = splitter.Rest()) lines.push_back("rest:" + std::string(rest->text));
    return lines;
}

TEST(LineSplitterLines, AreTheSameForPiecesOfAnySize) {
    const std::vector<std::string> expected{"one", "", std::string("t\0wo", 4), "three",
                                            "rest:four"};
    for (const std::size_t piece : {1U, 2U, 3U, 5U, 100U})
        EXPECT_EQ(Lines(Splitter(std::string("one\n\nt\0wo\nthree\nfour", 20), piece)), expected);
}

TEST(LineSplitterLines, NothingFollowsTheLastLineFeed) {
    EXPECT_EQ(Lines(Splitter("one\n", 100)), std::vector<std::string>{"one"});
    EXPECT_TRUE(Lines(Splitter("", 100)).empty());
}

TEST(LineSplitterLimit, CutsALineAndDropsItsRest) {
    const std::string line(100, 'x');
    for (const std::size_t piece : {1U, 7U, 1000U}) {
        const std::vector<std::string> expected{"a", "cut:" + std::string(10, 'x'), "b"};
        EXPECT_EQ(Lines(Splitter("a\n" + line + "\nb\n", piece, 10)), expected) << piece;
    }
}

TEST(LineSplitterLimit, ALineOfAHundredMegabytesIsCut) {
    const std::vector<std::string> lines =
        Lines(Splitter(std::string(100'000'000, 'x') + "\nb\n", std::size_t{1} << 20U));
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].size(), 4 + LineSplitter::UsualLimit);
    EXPECT_EQ(lines[1], "b");
}

TEST(LineSplitterGrowth, LaterLinesAreFound) {
    std::string text = "one\n";
    std::size_t position = 0;
    LineSplitter splitter([&](char* buffer, std::size_t) {
        const std::size_t count = text.size() - position;
        std::copy_n(text.data() + position, count, buffer);
        position = text.size();
        return count;
    });
    EXPECT_EQ(splitter.Next()->text, "one");
    EXPECT_FALSE(splitter.Next());
    text += "tw";
    EXPECT_FALSE(splitter.Next());
    text += "o\n";
    EXPECT_EQ(splitter.Next()->text, "two");
    EXPECT_EQ(splitter.Consumed(), 8U);
}

}  // namespace
