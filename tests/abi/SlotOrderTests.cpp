// The order of the virtual functions is part of each exported interface.

#include <VelBase/ReferenceCounted.h>
#include <VelLog/LogSink.h>
#include <VelNet/Exception.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/Socket.h>
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
              Rising(FirstOwnOfCounted, 17));
}
