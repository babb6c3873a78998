// Waits that fail themselves, or whose timeout comes when they have begun.
#include <Platform/System.h>
#include <sys/time.h>

#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

#include "conformance/Provocation.h"
#include "conformance/Scene.h"

namespace Conformance {
namespace {

// Without any descriptor allowed the system refuses to wait for one.
using WaitingThatFails = Started;

TEST_F(WaitingThatFails, DoesNotMakeABlockingConnectSucceed) {
    FullListener listener;
    const OwnedSocket socket = NewStream();
    // Makes the system's connect return unfinished.
    ASSERT_TRUE(Succeeds(SetOption(socket, Winsock::OptionSendTimeout, 10)));
    {
        const DescriptorLimit none(0);
        ASSERT_TRUE(none.IsSet());
        EXPECT_TRUE(FailsWith(10022, Connect(socket, Loopback(listener.Port()))));
    }
    EXPECT_TRUE(FailsWith(10057, Send(socket, "x")));
    EXPECT_TRUE(FailsWith(10037, Connect(socket, Loopback(listener.Port()))));
    listener.Drain();
    EXPECT_EQ(RepeatWhile(10057, [&] { return Send(socket, "x"); }), 1);
}

TEST_F(WaitingThatFails, EndsAnInterruptedReceive) {
    const OwnedSocket listener = NewListener();
    const RawPeer peer = RawPeer::ConnectedTo(LocalPort(listener));
    const OwnedSocket socket = Accept(listener);
    {
        const SignalStorm storm([&] { peer.Send("late"); });
        const DescriptorLimit none(0);
        ASSERT_TRUE(none.IsSet());
        EXPECT_TRUE(FailsWith(10022, TryReceive(socket)));
    }
    peer.Send("afterwards");
    EXPECT_EQ(Receive(socket), "afterwards");
}

// Signals at rare times, whose handler runs the next of the actions each.
class RareSignals {
public:
    explicit RareSignals(std::vector<std::function<void()>> actions) {
        actions_ = new std::vector<std::function<void()>>(std::move(actions));
        next_ = 0;
        struct sigaction handling = {};
        handling.sa_handler = Act;
        ::sigaction(SIGALRM, &handling, nullptr);
        SetTimer(50'000);
    }
    ~RareSignals() {
        SetTimer(0);
        ::signal(SIGALRM, SIG_IGN);
        delete std::exchange(actions_, nullptr);
    }
    RareSignals(const RareSignals&) = delete;
    RareSignals& operator=(const RareSignals&) = delete;

private:
    static void Act(int) {
        const int error = errno;
        if (next_ < actions_->size()) (*actions_)[next_++]();
        errno = error;
    }
    static void SetTimer(suseconds_t interval) {
        const itimerval timer = {.it_interval = {.tv_sec = 0, .tv_usec = interval},
                                 .it_value = {.tv_sec = 0, .tv_usec = interval}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
    static inline std::vector<std::function<void()>>* actions_ = nullptr;
    static inline std::size_t next_ = 0;
};

TEST(WaitingInSleep, OfOneMillisecondTakesIt) {
    EXPECT_GE(TimeOf([] { System::Sleep(1); }), Milliseconds(1));
}

using WaitingWhileATimeoutIsSet = Started;

TEST_F(WaitingWhileATimeoutIsSet, CountsFromThenOn) {
    const OwnedSocket receiver = NewBoundDatagram();
    const OwnedSocket sender = NewDatagram();
    ASSERT_TRUE(Succeeds(Connect(sender, LocalAddress(receiver))));
    const RareSignals signals({[&] { SetOption(receiver, Winsock::OptionReceiveTimeout, 60'000); },
                               [&] { Send(sender, "in time"); }});
    EXPECT_EQ(Receive(receiver), "in time");
}

}  // namespace
}  // namespace Conformance
