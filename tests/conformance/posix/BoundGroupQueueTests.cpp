// The datagrams of groups and those of the own address come as if from one queue.
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <set>
#include <string>
#include <thread>

#include "BoundGroupScene.h"
#include "conformance/Provocation.h"
#include "conformance/SelectScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using BoundGroupQueue = BoundGroup;

TEST_F(BoundGroupQueue, IsSelectedAndCounted) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    EXPECT_EQ(ReadyFor(receiver_), "w");
    EXPECT_EQ(BytesAvailable(receiver_), 0U);
    SendToGroup("to all");
    ASSERT_TRUE(IsReadable(receiver_));
    EXPECT_EQ(ReadyFor(receiver_), "rw");
    EXPECT_EQ(BytesAvailable(receiver_), 6U);
    EXPECT_EQ(Receive(receiver_), "to all");
    EXPECT_EQ(ReadyFor(receiver_), "w");
    EXPECT_EQ(BytesAvailable(receiver_), 0U);
}

TEST_F(BoundGroupQueue, LeavesTimeOutAndWouldBlockAsTheyAre) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetOption(receiver_, Winsock::OptionReceiveTimeout, 50)));
    EXPECT_GE(TimeOf([&] { EXPECT_TRUE(FailsWith(10060, TryReceive(receiver_))); }).count(), 40);
    SetNonBlocking(receiver_);
    EXPECT_TRUE(FailsWith(10035, TryReceive(receiver_)));
}

TEST_F(BoundGroupQueue, FillsTooSmallABufferAndFails) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("123456789");
    SendToGroup("next");
    char buffer[6] = "-----";
    EXPECT_TRUE(FailsWith(10040, Winsock::recv(receiver_.Get(), buffer, 4, 0)));
    EXPECT_STREQ(buffer, "1234-");
    EXPECT_EQ(Receive(receiver_), "next");
}

// The order of a queue that all had in common. The system begins to stamp what arrives a moment
// after it was asked to, so the first tries may yet come out otherwise.
TEST_F(BoundGroupQueue, KeepsTheOrderInWhichAllWasSent) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, OtherGroup)));
    std::string received;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (received != "123456789" && std::chrono::steady_clock::now() < end) {
        received.clear();
        SendToGroup("1");
        SendToAddress("2");
        SendToAddress("3");
        SendToGroup("4", OtherGroup);
        SendToGroup("5");
        SendToGroup("6");
        SendToGroup("7", OtherGroup);
        SendToAddress("8");
        SendToGroup("9");
        for (int count = 0; count < 9; ++count)
            received += Receive(receiver_);
    }
    EXPECT_EQ(received, "123456789");
}

// What had come before a group was left is not lost.
TEST_F(BoundGroupQueue, GivesWhatCameBeforeItWasLeft) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("before");
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Leave, Group)));
    SendToGroup("after");
    SendToAddress("to one");
    EXPECT_EQ(Receive(receiver_), "before");
    EXPECT_EQ(Receive(receiver_), "to one");
}

// Another thread takes a datagram between the look at it and the receive call.
TEST_F(BoundGroupQueue, IsReadThoughItsFirstHasBeenTaken) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("to all");
    SendToAddress("to one");
    const SystemCalls::FailingCall taken(SystemCalls::SystemCall::Recvmsg, EAGAIN, {.count = 1});
    EXPECT_EQ((std::set{Receive(receiver_), Receive(receiver_)}),
              (std::set<std::string>{"to all", "to one"}));
    EXPECT_GE(taken.Seen(), 4U);
}

TEST_F(BoundGroupQueue, IsReadWholeWithoutStamps) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    for (const bool hasAnother : {false, true}) {
        SendToGroup("to all");
        SendToAddress("to one");
        const SystemCalls::HookedCall unstamped(SystemCalls::SystemCall::Recvmsg,
                                                [hasAnother](const SystemCalls::Call& call) {
                                                    const SystemCalls::Word result = call.Make();
                                                    auto* const message = call.Pointer<msghdr>(1);
                                                    if ((call.Argument(2) & MSG_PEEK) == 0)
                                                        return result;
                                                    cmsghdr* const stamp = CMSG_FIRSTHDR(message);
                                                    if (stamp != nullptr)
                                                        stamp->cmsg_type = SCM_TIMESTAMP;
                                                    if (!hasAnother) message->msg_controllen = 0;
                                                    return result;
                                                });
        EXPECT_EQ((std::set{Receive(receiver_), Receive(receiver_)}),
                  (std::set<std::string>{"to all", "to one"}));
    }
}

// The peer's port is nobody's once its socket is closed.
TEST_F(BoundGroupQueue, LeavesReportsOfTheNetworkAsTheyAre) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    EXPECT_EQ(SendTo(receiver_, "anybody?", nobody), 8);
    EXPECT_TRUE(FailsWith(10054, TryReceive(receiver_)));
    EXPECT_EQ(SendTo(receiver_, "anybody?", nobody), 8);
    ASSERT_TRUE(IsReadable(receiver_));
    EXPECT_TRUE(FailsWith(10054, TryReceive(receiver_)));
    SendToGroup("to all");
    EXPECT_EQ(Receive(receiver_), "to all");
}

TEST_F(BoundGroupQueue, WakesAReceiveCallThatWaitsForWhatIsSentToIt) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    std::thread sender([this] {
        std::this_thread::sleep_for(Milliseconds(50));
        SendToGroup("to all");
    });
    EXPECT_EQ(Receive(receiver_), "to all");
    sender.join();
}

TEST_F(BoundGroupQueue, OfAClosedSocketLeavesAWaitingCall) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    const Winsock::Handle handle = receiver_.Take();
    std::thread closer([handle] {
        std::this_thread::sleep_for(Milliseconds(50));
        EXPECT_TRUE(Succeeds(Winsock::closesocket(handle)));
    });
    char byte = 0;
    EXPECT_TRUE(FailsWith(10004, Winsock::recv(handle, &byte, 1, 0)));
    closer.join();
}

// Of one queue, strangers are taken out when the socket gets a peer.
TEST_F(BoundGroupQueue, IsClearedOfStrangersForThePeer) {
    const OwnedSocket stranger = NewBoundDatagram();
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup(stranger, "strange");
    SendToGroup("one");
    EXPECT_EQ(SendTo(stranger, "strange", Loopback(port_)), 7);
    SendToAddress("two");
    SendToGroup(stranger, "strange");
    ASSERT_TRUE(Succeeds(Connect(receiver_, LocalAddress(sender_))));
    EXPECT_EQ(BytesAvailable(receiver_), 3U);
    EXPECT_EQ(Receive(receiver_), "one");
    EXPECT_EQ(Receive(receiver_), "two");
    EXPECT_EQ(ReadyFor(receiver_), "w");
    EXPECT_EQ(BytesAvailable(receiver_), 0U);
}

TEST_F(BoundGroupQueue, TellsOfAReportAmongDatagrams) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    SendToGroup("one");
    SendToAddress("two");
    EXPECT_EQ(SendTo(receiver_, "anybody?", nobody), 8);
    int resets = 0;
    std::string received;
    for (int count = 0; count < 3; ++count) {
        const std::string text = Receive(receiver_);
        if (text == "failure 10054") {
            ++resets;
        } else {
            received += text;
        }
    }
    EXPECT_EQ(resets, 1);
    EXPECT_EQ(received.size(), 6U);
}

TEST_F(BoundGroupQueue, TellsOfAReportBeforeTheDatagrams) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    OwnedSocket gone = NewBoundDatagram();
    const Winsock::AddressIpv4 nobody = LocalAddress(gone);
    gone.Close();
    SendToGroup("one");
    EXPECT_EQ(SendTo(receiver_, "anybody?", nobody), 8);
    AwaitEnd(receiver_.Get());
    EXPECT_TRUE(FailsWith(10054, TryReceive(receiver_)));
    EXPECT_EQ(Receive(receiver_), "one");
}

// A report that comes while the queues are compared.
TEST_F(BoundGroupQueue, LosesNoReportThatALookMeets) {
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("one");
    SendToAddress("two");
    std::string received;
    {
        const SystemCalls::FailingCall meets(SystemCalls::SystemCall::Recvmsg, ECONNREFUSED,
                                             {.count = 1});
        received = Receive(receiver_);
    }
    EXPECT_TRUE(FailsWith(10054, TryReceive(receiver_)));
    EXPECT_EQ((received + Receive(receiver_)).size(), 6U);
}

// The time of arrival decides, to the nanosecond and over the turn of a second.
TEST_F(BoundGroupQueue, GivesWhatHasArrivedFirst) {
    using namespace SystemCalls;
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToAddress("later");
    SendToGroup("first");
    const auto own = static_cast<Word>(receiver_.Get());
    const HookedCall stamps(SystemCall::Recvmsg, [own](const Call& call) {
        const Word result = call.Make();
        cmsghdr* const part = CMSG_FIRSTHDR(call.Pointer<msghdr>(1));
        if (part == nullptr) return result;
        const timespec time = call.Argument(0) == own ? timespec{2, 0} : timespec{1, 999'999'999};
        std::memcpy(CMSG_DATA(part), &time, sizeof time);
        return result;
    });
    EXPECT_EQ(Receive(receiver_), "first");
    EXPECT_EQ(Receive(receiver_), "later");
}

// Before the system has begun to stamp what arrives.
TEST_F(BoundGroupQueue, GivesWhatHasNoTimeOfArrivalFirst) {
    using namespace SystemCalls;
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    const auto own = static_cast<Word>(receiver_.Get());
    for (const bool ownFirst : {true, false}) {
        SendToAddress("own");
        SendToGroup("group's");
        const HookedCall stamps(SystemCall::Recvmsg, [&](const Call& call) {
            const Word result = call.Make();
            if ((call.Argument(0) == own) == ownFirst) call.Pointer<msghdr>(1)->msg_controllen = 0;
            return result;
        });
        EXPECT_EQ(Receive(receiver_), ownFirst ? "own" : "group's");
        EXPECT_EQ(Receive(receiver_), ownFirst ? "group's" : "own");
    }
}

TEST_F(BoundGroupQueue, IsComparedOnlyWhereSeveralHaveSomething) {
    using namespace SystemCalls;
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToGroup("one");
    const CountedCall looks(SystemCall::Recvmsg);
    EXPECT_EQ(Receive(receiver_), "one");
    EXPECT_EQ(looks.Seen(), 1U);
}

TEST_F(BoundGroupQueue, IsNotWaitedForWhileItIsCompared) {
    using namespace SystemCalls;
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    SendToAddress("taken by another thread");
    SendToGroup("left");
    const auto own = static_cast<Word>(receiver_.Get());
    const HookedCall takes(SystemCall::Recvmsg, [own](const Call& call) {
        char byte = 0;
        if (call.Argument(0) == own) ::recv(static_cast<int>(own), &byte, 1, MSG_DONTWAIT);
        return call.Make();
    });
    EXPECT_LT(TimeOf([&] { EXPECT_EQ(Receive(receiver_), "left"); }), Milliseconds(15'000));
}

// Nothing may be there any more when the wait is over.
TEST_F(BoundGroupQueue, IsNotReadableForAFalseAlarm) {
    using namespace SystemCalls;
    ASSERT_TRUE(Succeeds(SetMembership(receiver_, Join, Group)));
    Winsock::HandleSet read = SetOf({receiver_.Get()});
    const Winsock::TimeValue time = {0, 20'000};
    const HookedCall alarms(SystemCall::Ppoll,
                            [](const Call& call) {
                                call.Pointer<pollfd>(0)->revents = POLLIN;
                                return Word{1};
                            },
                            {.count = 1});
    EXPECT_TRUE(Succeeds(Winsock::select(0, &read, nullptr, nullptr, &time), 0));
    EXPECT_GE(alarms.Seen(), 2U);
}

}  // namespace
}  // namespace Conformance
