// The order of the virtual functions is part of each exported interface.

#include <VelBase/ReferenceCounted.h>
#include <VelLog/LogSink.h>
#include <VelNet/Exception.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketXt.h>
#include <VelSynch/ReferenceCountedImpl.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "abi/SlotOrder.h"

using Abi::SlotOf;
using Slots = std::vector<std::size_t>;

namespace {

// A virtual destructor takes two slots.
constexpr std::size_t FirstBehindDestructor = 2;
constexpr std::size_t FirstOwnOfCounted = FirstBehindDestructor + 2;  // behind AddRef and Release
constexpr std::size_t SocketOperations = 17;

Slots Rising(std::size_t first, std::size_t count) {
    Slots slots;
    for (std::size_t index = 0; index < count; ++index)
        slots.push_back(first + index);
    return slots;
}

}  // namespace

TEST(SlotOrder, ReferenceCountedHasDestructorAddRefRelease) {
    EXPECT_EQ((Slots{SlotOf(&VelBase::ReferenceCounted::AddRef),
                     SlotOf(&VelBase::ReferenceCounted::Release)}),
              Rising(FirstBehindDestructor, 2));
}

TEST(SlotOrder, CountingClassAddsItsHookFirst) {
    using Counted = VelSynch::ReferenceCountedImpl<int>;
    EXPECT_EQ(SlotOf(&Counted::ReferenceCountIsAboutToReachZero), FirstOwnOfCounted);
}

TEST(SlotOrder, ExceptionHasDestructorThenMessage) {
    EXPECT_EQ(SlotOf(&VelNet::Exception::GetMessage), FirstBehindDestructor);
}

TEST(SlotOrder, LogSinkHasDestructorThenWrite) {
    EXPECT_EQ(SlotOf(&VelLog::LogSink::Write), FirstBehindDestructor);
}

TEST(SlotOrder, OctetsCollectionHasItsFourOperations) {
    using VelNet::OctetsCollection;
    EXPECT_EQ((Slots{SlotOf(&OctetsCollection::AddCollection), SlotOf(&OctetsCollection::Add),
                     SlotOf(&OctetsCollection::GetCount), SlotOf(&OctetsCollection::GetOctets)}),
              Rising(FirstOwnOfCounted, 4));
}

TEST(SlotOrder, SocketHasItsSeventeenOperations) {
    using VelNet::Socket;
    EXPECT_EQ((Slots{SlotOf(&Socket::IsSameSocket), SlotOf(&Socket::SetNonBlocking),
                     SlotOf(&Socket::IsValid), SlotOf(&Socket::Bind), SlotOf(&Socket::Listen),
                     SlotOf(&Socket::Connect), SlotOf(&Socket::Accept),
                     SlotOf(&Socket::SetReceiveTimeout), SlotOf(&Socket::SetSendTimeout),
                     SlotOf(&Socket::SetReuseAddress), SlotOf(&Socket::Close),
                     SlotOf(&Socket::Receive), SlotOf(&Socket::Send),
                     SlotOf(&Socket::IsDataAvailable), SlotOf(&Socket::GetLocalAddress),
                     SlotOf(&Socket::GetRemoteAddress), SlotOf(&Socket::GetStatus)}),
              Rising(FirstOwnOfCounted, SocketOperations));
}

TEST(SlotOrder, ExtendedSocketAddsItsFourteenOperations) {
    using VelBase::ReturnPtrI;
    using VelBase::ReturnString;
    using VelNet::SocketXt;
    using Special = VelNet::SpecialAddressKind;
    using OfSpecial = void (SocketXt::*)(Special, const char*);
    using OfTexts = void (SocketXt::*)(const char*, const char*);
    using Accept =
        ReturnPtrI<SocketXt>& (SocketXt::*)(ReturnPtrI<SocketXt>&, ReturnString&, ReturnString&);
    using GroupOfSpecial = void (SocketXt::*)(Special, int);
    using GroupOfText = void (SocketXt::*)(const char*, int);
    using SendToSpecial = int (SocketXt::*)(const char*, int, Special, const char*);
    using SendToTexts = int (SocketXt::*)(const char*, int, const char*, const char*);
    EXPECT_EQ(
        (Slots{SlotOf(static_cast<OfSpecial>(&SocketXt::Bind)),
               SlotOf(static_cast<OfTexts>(&SocketXt::Bind)),
               SlotOf(static_cast<Accept>(&SocketXt::Accept)),
               SlotOf(static_cast<OfSpecial>(&SocketXt::Connect)),
               SlotOf(static_cast<OfTexts>(&SocketXt::Connect)),
               SlotOf(&SocketXt::GetAddressFamily), SlotOf(&SocketXt::SetSocketForBroadcast),
               SlotOf(static_cast<GroupOfSpecial>(&SocketXt::SetSocketForMulticast)),
               SlotOf(static_cast<GroupOfText>(&SocketXt::SetSocketForMulticast)),
               SlotOf(static_cast<SendToSpecial>(&SocketXt::SendTo)),
               SlotOf(static_cast<SendToTexts>(&SocketXt::SendTo)), SlotOf(&SocketXt::RecvFrom),
               SlotOf(&SocketXt::GetHandle), SlotOf(&SocketXt::GetSpecialAddress)}),
        Rising(FirstOwnOfCounted + SocketOperations, 14));
}

// The interface has no destructor in its table.
TEST(SlotOrder, SocketCollectionHasItsEightOperationsFromTheFirstSlotOn) {
    using VelNet::SocketCollection;
    EXPECT_EQ((Slots{SlotOf(&SocketCollection::Add), SlotOf(&SocketCollection::Remove),
                     SlotOf(&SocketCollection::GetCount), SlotOf(&SocketCollection::GetSocket),
                     SlotOf(&SocketCollection::GetEvent), SlotOf(&SocketCollection::Find),
                     SlotOf(&SocketCollection::Select), SlotOf(&SocketCollection::Destroy)}),
              Rising(0, 8));
}

TEST(SlotOrder, SocketAddressCacheHasItsTwoOperations) {
    using VelNet::SocketAddressCache;
    EXPECT_EQ((Slots{SlotOf(&SocketAddressCache::GetOctetsFromMachineName),
                     SlotOf(&SocketAddressCache::GetMachineNameFromOctets)}),
              Rising(FirstOwnOfCounted, 2));
}
