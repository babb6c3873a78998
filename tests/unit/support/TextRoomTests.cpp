#include <VelBase/TextRoom.h>

#include <cstring>
#include <new>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Allocations::FailNth;
using Scripted::Allocations::Mark;
using VelBase::ReturnString;
using VelBase::TextRoom;

class TextRooms : public Scripted::PlatformTest {};

TEST_F(TextRooms, AreEmptyTextsToBeginWith) {
    TextRoom room(16);
    EXPECT_STREQ(room.Begin(), "");
    EXPECT_STREQ(room.HandOver().c_str(), "");
}

TEST_F(TextRooms, HandOverWhatWasPutThere) {
    TextRoom room(16);
    std::strcpy(room.Begin(), "fifteen letters");
    EXPECT_STREQ(room.HandOver().c_str(), "fifteen letters");
}

TEST_F(TextRooms, HandOverNoMoreMemoryThanTheTextNeeds) {
    const Mark mark;
    ReturnString text;
    {
        TextRoom room(1000);
        std::strcpy(room.Begin(), "text");
        text = room.HandOver();
    }
    EXPECT_EQ(mark.LiveBytes(), 5);
    EXPECT_STREQ(text.c_str(), "text");
}

TEST_F(TextRooms, HandOverWithoutMemoryToo) {
    const Mark mark;
    {
        TextRoom room(1000);
        std::strcpy(room.Begin(), "text");
        const FailNth failing(1);
        const ReturnString text = room.HandOver();
        EXPECT_TRUE(failing.Happened());
        EXPECT_STREQ(text.c_str(), "text");
    }
    EXPECT_EQ(mark.LiveBlocks(), 0);
}

TEST_F(TextRooms, AreRefusedWhenThereIsNoMemory) {
    Support::ExpectBadAllocFromEveryAllocation(1, [] { const TextRoom room(16); });
}

}  // namespace
