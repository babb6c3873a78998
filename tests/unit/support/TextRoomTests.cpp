#include <VelBase/TextRoom.h>

#include <new>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Allocations::FailNth;
using Scripted::Allocations::Mark;
using VelBase::ReturnString;
using VelBase::TextRoom;

class TextRooms : public Scripted::PlatformTest {};

TEST_F(TextRooms, HandOverWhatTheyAreGiven) {
    TextRoom room(16);
    EXPECT_STREQ(room.HandOver("fifteen letters").c_str(), "fifteen letters");
}

TEST_F(TextRooms, HandOverTextsWithoutMoreMemory) {
    for (const char* const text : {"", "text", "fifteen letters"}) {
        TextRoom room(16);
        const Mark mark;
        const ReturnString handedOver = room.HandOver(text);
        EXPECT_EQ(mark.Requests(), 0U);
        EXPECT_STREQ(handedOver.c_str(), text);
    }
}

TEST_F(TextRooms, HandOverLongerTextsInMemoryOfTheirOwn) {
    const Mark mark;
    {
        TextRoom room(16);
        EXPECT_STREQ(room.HandOver("sixteen letters!").c_str(), "sixteen letters!");
    }
    EXPECT_EQ(mark.LiveBlocks(), 0);
    TextRoom room(16);
    const FailNth failing(1);
    EXPECT_THROW(room.HandOver("sixteen letters!"), std::bad_alloc);
}

TEST_F(TextRooms, AreGivenAwayOnce) {
    TextRoom room(16);
    const ReturnString first = room.HandOver("first");
    EXPECT_STREQ(room.HandOver("second").c_str(), "second");
    EXPECT_STREQ(room.HandOver("").c_str(), "");
    EXPECT_STREQ(first.c_str(), "first");
}

TEST_F(TextRooms, AreRefusedWhenThereIsNoMemory) {
    Support::ExpectBadAllocFromEveryAllocation(1, [] { const TextRoom room(16); });
}

}  // namespace
