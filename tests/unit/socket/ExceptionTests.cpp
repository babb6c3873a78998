#include <VelNet/Exception.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <numeric>
#include <vector>

#include "scripted/ScriptedPlatform.h"

namespace FoundationTests {
namespace {

using Scripted::Text;
using Scripted::Wide;
using VelBase::Message;
using VelNet::Exception;
using VelNet::SOCKET_ERR;

constexpr std::size_t TextUnits = 3000;

using Units = std::vector<unsigned short>;

class ExceptionValue : public Scripted::PlatformTest {};

// The whole text buffer, what follows the terminator included.
Units BufferOf(const Exception& exception) {
    return {exception.GetMessage(), exception.GetMessage() + TextUnits};
}

// Different units without a zero among them, and a terminator.
Units LongText(std::size_t length) {
    Units units(length);
    std::iota(units.begin(), units.end(), static_cast<unsigned short>(1));
    for (unsigned short& unit : units)
        if (unit == 0) unit = 1;
    units.push_back(0);
    return units;
}

// What a buffer must be that a text was copied into.
Units Padded(Units text) {
    text.resize(TextUnits - 1, 0);
    text.push_back(0);
    return text;
}

unsigned short* WritableText(Exception& exception) {
    return const_cast<unsigned short*>(exception.GetMessage());
}

// Through a pointer that the compiler knows nothing about, so that the fill is not dropped as a
// store to an object that does not live yet.
void* (*volatile g_fill)(void*, int, std::size_t) = std::memset;

class FilledStorage {
public:
    FilledStorage() : memory_(std::allocator<Exception>().allocate(1)) {
        g_fill(memory_, 0xAB, sizeof(Exception));
    }
    ~FilledStorage() { std::allocator<Exception>().deallocate(memory_, 1); }
    FilledStorage(const FilledStorage&) = delete;
    FilledStorage& operator=(const FilledStorage&) = delete;

    Exception* Get() const { return memory_; }

private:
    Exception* memory_;
};

TEST_F(ExceptionValue, HoldsTextAndCode) {
    const Exception exception(Wide(u"no such host \u274D").data(), VelNet::SOCKET_ERR_NO_DATA);
    EXPECT_EQ(Text(exception.GetMessage()), u"no such host \u274D");
    EXPECT_EQ(exception.GetErrorCode(), 11004);
}

TEST_F(ExceptionValue, HoldsAnyCode) {
    for (const int code : Scripted::ErrorNumbers())
        EXPECT_EQ(Exception(Wide(u"x").data(), static_cast<SOCKET_ERR>(code)).GetErrorCode(), code);
}

TEST_F(ExceptionValue, KeepsHalfSurrogatesAndControlUnitsAsTheyAre) {
    const Units text = {0xD800, 0xFFFF, 0x0001, 0xDC00, 0x000A, 0x0025, 0x0031, 0};
    const Exception exception(text.data(), VelNet::SOCKET_ERR_INTR);
    EXPECT_EQ(BufferOf(exception), Padded(text));
}

TEST_F(ExceptionValue, ShortTextIsFollowedByZeros) {
    const FilledStorage storage;
    const Units text = Wide(u"short");
    Exception* const exception =
        new (storage.Get()) Exception(text.data(), VelNet::SOCKET_ERR_BADF);
    EXPECT_EQ(BufferOf(*exception), Padded(text));
    std::destroy_at(exception);
}

TEST_F(ExceptionValue, EmptyTextIsAllZeros) {
    const FilledStorage storage;
    const Units text = {0};
    Exception* const exception =
        new (storage.Get()) Exception(text.data(), VelNet::SOCKET_ERR_BADF);
    EXPECT_EQ(BufferOf(*exception), Units(TextUnits, 0));
    EXPECT_EQ(exception->GetErrorCode(), 10009);
    std::destroy_at(exception);
}

TEST_F(ExceptionValue, TextOf2999UnitsIsKeptWhole) {
    const Units text = LongText(2999);
    EXPECT_EQ(BufferOf(Exception(text.data(), VelNet::SOCKET_ERR_INTR)), text);
}

TEST_F(ExceptionValue, TextOf2998UnitsIsKeptWhole) {
    const Units text = LongText(2998);
    EXPECT_EQ(BufferOf(Exception(text.data(), VelNet::SOCKET_ERR_INTR)), Padded(text));
}

TEST_F(ExceptionValue, LongerTextIsCutTo2999UnitsWithoutNotice) {
    for (const std::size_t length : {3000U, 3001U, 5000U, 70000U}) {
        const Units text = LongText(length);
        Units kept(text.begin(), text.begin() + 2999);
        kept.push_back(0);
        EXPECT_EQ(BufferOf(Exception(text.data(), VelNet::SOCKET_ERR_INTR)), kept) << length;
    }
}

TEST_F(ExceptionValue, ReadsNothingBehindTheTerminator) {
    const auto text = std::make_unique<Units>(Wide(u"ends here"));
    text->shrink_to_fit();  // a checked build sees a read past the end
    EXPECT_EQ(Text(Exception(text->data(), VelNet::SOCKET_ERR_INTR).GetMessage()), u"ends here");
}

TEST_F(ExceptionValue, NullTextLeavesTextAndCodeUnwritten) {
    const FilledStorage storage;
    Exception* const exception = new (storage.Get()) Exception(nullptr, VelNet::SOCKET_ERR_BADF);
    EXPECT_EQ(BufferOf(*exception), Units(TextUnits, 0xABAB));
    EXPECT_EQ(static_cast<unsigned int>(exception->GetErrorCode()), 0xABABABABU);
    EXPECT_EQ(Text(static_cast<const Message&>(*exception).GetMessage()), u"");
    std::destroy_at(exception);
}

TEST_F(ExceptionValue, BaseIsLeftEmpty) {
    const Exception exception(Wide(u"failure").data(), VelNet::SOCKET_ERR_INTR);
    const Message& base = exception;
    EXPECT_EQ(base.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    EXPECT_EQ(base.GetID(), 0);
    EXPECT_EQ(Text(base.GetMessage()), u"");
}

TEST_F(ExceptionValue, TextLiesInsideTheObject) {
    const Exception exception(Wide(u"inside").data(), VelNet::SOCKET_ERR_INTR);
    const auto* const start = reinterpret_cast<const std::byte*>(&exception);
    const auto* const text = reinterpret_cast<const std::byte*>(exception.GetMessage());
    EXPECT_GE(text, start + sizeof(Message));
    EXPECT_LE(text + TextUnits * 2 + sizeof(SOCKET_ERR), start + sizeof exception);
}

TEST_F(ExceptionValue, CodeStandsRightBehindTheText) {
    const Exception exception(Wide(u"x").data(), static_cast<SOCKET_ERR>(0x01020304));
    int code = 0;
    std::memcpy(&code, exception.GetMessage() + TextUnits, sizeof code);
    EXPECT_EQ(code, 0x01020304);
}

TEST_F(ExceptionValue, NamesThatTheWindowsMacroMakesGiveTheSameText) {
    const Exception exception(Wide(u"macro").data(), VelNet::SOCKET_ERR_INTR);
    EXPECT_EQ(exception.GetMessageA(), exception.GetMessage());
    EXPECT_EQ(exception.GetMessageW(), exception.GetMessage());
}

TEST_F(ExceptionValue, CopyHasAllUnitsAlsoBehindTheTerminator) {
    Exception source(Wide(u"seen").data(), VelNet::SOCKET_ERR_LOOP);
    for (std::size_t index = 5; index < TextUnits; ++index)
        WritableText(source)[index] = static_cast<unsigned short>(index);
    const Units planted = BufferOf(source);
    const Exception copy(source);
    EXPECT_EQ(BufferOf(copy), planted);
    EXPECT_EQ(copy.GetErrorCode(), 10062);
    EXPECT_EQ(BufferOf(source), planted);
}

TEST_F(ExceptionValue, CopyOfATextWithoutTerminatorIsNotTerminated) {
    Exception source(Wide(u"x").data(), VelNet::SOCKET_ERR_LOOP);
    std::fill_n(WritableText(source), TextUnits, static_cast<unsigned short>(0x7777));
    const Exception copy(source);
    Exception assigned(Wide(u"y").data(), VelNet::SOCKET_ERR_INTR);
    assigned = source;
    EXPECT_EQ(BufferOf(copy), Units(TextUnits, 0x7777));
    EXPECT_EQ(BufferOf(assigned), Units(TextUnits, 0x7777));
}

TEST_F(ExceptionValue, AssignmentTakesAllUnitsAndTheCodeAndReturnsTheTarget) {
    Exception source(Wide(u"short").data(), VelNet::SOCKET_ERR_LOOP);
    WritableText(source)[100] = 0x4242;
    Exception target(LongText(2999).data(), VelNet::SOCKET_ERR_INTR);
    Exception& result = (target = source);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(BufferOf(target), BufferOf(source));
    EXPECT_EQ(target.GetErrorCode(), 10062);
}

TEST_F(ExceptionValue, SelfAssignmentChangesNothing) {
    Exception exception(LongText(2999).data(), VelNet::SOCKET_ERR_LOOP);
    static_cast<Message&>(exception).SetMessage(Wide(u"base").data());
    const Exception& itself = exception;
    exception = itself;
    EXPECT_EQ(BufferOf(exception), LongText(2999));
    EXPECT_EQ(exception.GetErrorCode(), 10062);
    EXPECT_EQ(Text(static_cast<const Message&>(exception).GetMessage()), u"base");
}

TEST_F(ExceptionValue, CopyAndAssignmentTakeTheBaseWithThem) {
    Exception source(Wide(u"own").data(), VelNet::SOCKET_ERR_LOOP);
    source.SetDomainAndID(7, -3);
    static_cast<Message&>(source).SetMessage(Wide(u"base").data());
    const Exception copy(source);
    Exception assigned(Wide(u"other").data(), VelNet::SOCKET_ERR_INTR);
    assigned = source;
    for (const Message* const base :
         {static_cast<const Message*>(&copy), static_cast<const Message*>(&assigned)}) {
        EXPECT_EQ(base->GetDomain(), 7);
        EXPECT_EQ(base->GetID(), -3);
        EXPECT_EQ(Text(base->GetMessage()), u"base");
        EXPECT_NE(base->GetMessage(), static_cast<const Message&>(source).GetMessage());
    }
}

TEST_F(ExceptionValue, CopiesAreIndependent) {
    Exception source(Wide(u"before").data(), VelNet::SOCKET_ERR_LOOP);
    const Exception copy(source);
    source = Exception(Wide(u"after").data(), VelNet::SOCKET_ERR_INTR);
    EXPECT_EQ(Text(copy.GetMessage()), u"before");
    EXPECT_EQ(copy.GetErrorCode(), 10062);
}

TEST_F(ExceptionValue, NothingIsAllocatedToMakeCopyThrowAndCatchOne) {
    const Units text = LongText(5000);
    const Scripted::Allocations::Mark mark;
    const Exception exception(text.data(), VelNet::SOCKET_ERR_LOOP);
    Exception copy(exception);
    copy = exception;
    try {
        throw copy;
    } catch (const Exception& caught) {
        EXPECT_EQ(caught.GetErrorCode(), 10062);
    }
    EXPECT_EQ(mark.Requests(), 0U);
}

TEST_F(ExceptionValue, IsCaughtAsItselfAndAsItsBase) {
    const Exception exception(Wide(u"thrown").data(), VelNet::SOCKET_ERR_LOOP);
    EXPECT_THROW(throw exception, Exception);
    try {
        throw exception;
    } catch (const Message& caught) {
        EXPECT_EQ(Text(caught.GetMessage()), u"");
        const auto& whole = static_cast<const Exception&>(caught);
        EXPECT_EQ(Text(whole.GetMessage()), u"thrown");
        EXPECT_EQ(whole.GetErrorCode(), 10062);
    }
}

TEST_F(ExceptionValue, MessageIsAskedForVirtually) {
    struct Renamed : Exception {
        using Exception::Exception;
        const unsigned short* GetMessage() const override { return name.data(); }
        Units name = Wide(u"renamed");
    };
    const Renamed renamed(Wide(u"own").data(), VelNet::SOCKET_ERR_INTR);
    const Exception& exception = renamed;
    EXPECT_EQ(Text(exception.GetMessage()), u"renamed");
}

TEST_F(ExceptionValue, DerivedOneIsDestroyedThroughItsBase) {
    struct Counting : Exception {
        explicit Counting(int& ends) : Exception(nullptr, VelNet::SOCKET_ERR_INTR), ends_(ends) {}
        ~Counting() override { ++ends_; }
        int& ends_;
    };
    int ends = 0;
    std::unique_ptr<Exception>(new Counting(ends)).reset();
    EXPECT_EQ(ends, 1);
}

}  // namespace
}  // namespace FoundationTests
