#include <VelBase/ExceptionImpl.h>
#include <VelBase/Message.h>
#include <VelBase/WideLiteral.h>
#include <VelRegistry/KeyException.h>

#include <type_traits>

#include "scripted/ScriptedPlatform.h"
#include "support/OutOfMemory.h"

namespace {

using Scripted::Text;
using VelBase::Message;
using VelBase::operator""_wide;
using VelBase::ExceptionImpl;
using VelRegistry::KeyException;

static_assert(std::is_default_constructible_v<Message> && std::is_copy_constructible_v<Message>);
static_assert(std::is_copy_assignable_v<Message>);
static_assert(!std::is_polymorphic_v<Message>);
static_assert(!std::is_polymorphic_v<ExceptionImpl<Message>>);
static_assert(std::is_base_of_v<Message, ExceptionImpl<Message>>);
static_assert(std::is_base_of_v<ExceptionImpl<Message>, KeyException>);
static_assert(std::is_same_v<decltype(VelBase::MESSAGE_DOMAIN_UNKNOWN), const unsigned short>);
static_assert(std::is_same_v<decltype(&Message::GetMessage),
                             const unsigned short* (Message::*)() const noexcept>);
static_assert(
    std::is_same_v<decltype(&Message::SetMessage), void (Message::*)(const unsigned short*)>);
static_assert(std::is_same_v<decltype(&Message::SetDomainAndID),
                             void (Message::*)(unsigned short, int) noexcept>);

Message MakeMessage(unsigned short domain, int id, const unsigned short* text) {
    Message message;
    message.SetDomainAndID(domain, id);
    message.SetMessage(text);
    return message;
}

class Messages : public Scripted::PlatformTest {};

TEST_F(Messages, NewMessageIsEmptyWithoutAllocation) {
    const Scripted::Allocations::Mark mark;
    const Message message;
    EXPECT_EQ(message.GetDomain(), VelBase::MESSAGE_DOMAIN_UNKNOWN);
    EXPECT_EQ(message.GetID(), 0);
    EXPECT_EQ(Text(message.GetMessage()), u"");
    EXPECT_EQ(mark.Requests(), 0u);
}

TEST_F(Messages, DomainAndIdentifierAreKeptWhole) {
    Message message;
    message.SetDomainAndID(65535, -2147483647 - 1);
    EXPECT_EQ(message.GetDomain(), 65535);
    EXPECT_EQ(message.GetID(), -2147483647 - 1);
}

TEST_F(Messages, TextIsCopied) {
    unsigned short source[] = {'a', 'b', 0};
    Message message;
    message.SetMessage(source);
    source[0] = 'X';
    EXPECT_EQ(Text(message.GetMessage()), u"ab");
    message.SetMessage(nullptr);
    EXPECT_EQ(Text(message.GetMessage()), u"");
}

TEST_F(Messages, OwnTextCanBeSetAgain) {
    Message message = MakeMessage(0, 0, "text"_wide);
    message.SetMessage(message.GetMessage());
    EXPECT_EQ(Text(message.GetMessage()), u"text");
    message.SetMessage(message.GetMessage() + 2);
    EXPECT_EQ(Text(message.GetMessage()), u"xt");
}

TEST_F(Messages, MacroNamesOfTheTextAnswerTheSame) {
    const Message message = MakeMessage(0, 0, "text"_wide);
    EXPECT_EQ(message.GetMessageA(), message.GetMessage());
    EXPECT_EQ(message.GetMessageW(), message.GetMessage());
}

TEST_F(Messages, CopiesOwnTheirOwnText) {
    Message source = MakeMessage(7, 10061, "source"_wide);
    const Message copy(source);
    Message assigned = MakeMessage(1, 2, "assigned"_wide);
    EXPECT_EQ(&(assigned = source), &assigned);
    source.SetMessage("changed"_wide);
    source.SetDomainAndID(8, 9);
    for (const Message* message : {&copy, static_cast<const Message*>(&assigned)}) {
        EXPECT_EQ(message->GetDomain(), 7);
        EXPECT_EQ(message->GetID(), 10061);
        EXPECT_EQ(Text(message->GetMessage()), u"source");
    }
}

TEST_F(Messages, FailedAllocationLeavesTheText) {
    Message message = MakeMessage(0, 0, "text"_wide);
    {
        const Scripted::Allocations::FailNth failing(1);
        EXPECT_THROW(message.SetMessage("other"_wide), std::bad_alloc);
    }
    EXPECT_EQ(Text(message.GetMessage()), u"text");
}

TEST_F(Messages, ThrownMessageIsCaughtAsItselfAndAsMessage) {
    const Message message = MakeMessage(VelBase::MESSAGE_DOMAIN_UNKNOWN, 10091, "down"_wide);
    try {
        throw ExceptionImpl<Message>(message);
    } catch (const ExceptionImpl<Message>& caught) {
        EXPECT_EQ(Text(caught.GetMessage()), u"down");
    }
    try {
        throw ExceptionImpl<Message>(message);
    } catch (Message& caught) {
        EXPECT_EQ(caught.GetID(), 10091);
        EXPECT_EQ(Text(caught.GetMessage()), u"down");
    }
}

TEST_F(Messages, KeyExceptionIsCaughtByEveryBase) {
    const Message message = MakeMessage(0, 5, "denied"_wide);
    EXPECT_THROW(throw KeyException(message), KeyException);
    EXPECT_THROW(throw KeyException(message), ExceptionImpl<Message>);
    try {
        throw KeyException(message);
    } catch (Message& caught) {
        EXPECT_EQ(caught.GetID(), 5);
        EXPECT_EQ(Text(caught.GetMessage()), u"denied");
    }
}

TEST_F(Messages, ExceptionsAreCopiedAndAssignedWithTheirText) {
    const ExceptionImpl<Message> first(MakeMessage(0, 1, "first"_wide));
    ExceptionImpl<Message> second(MakeMessage(0, 2, "second"_wide));
    const ExceptionImpl<Message> copy(first);
    second = first;
    EXPECT_EQ(Text(copy.GetMessage()), u"first");
    EXPECT_EQ(Text(second.GetMessage()), u"first");
    EXPECT_NE(copy.GetMessage(), first.GetMessage());
    const KeyException key(first);
    KeyException other(copy);
    const KeyException keyCopy(key);
    other = key;
    EXPECT_EQ(keyCopy.GetID(), 1);
    EXPECT_EQ(Text(other.GetMessage()), u"first");
}

TEST_F(Messages, EveryFailingAllocationIsReported) {
    Support::ExpectBadAllocFromEveryAllocation(2, [] {
        Message message;
        message.SetMessage("text"_wide);
        const Message copy(message);
    });
}

}  // namespace
