// The timeouts of accepted sockets are those that the listener has when it accepts.
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "Provocation.h"
#include "Scene.h"

namespace Conformance {
namespace {

// Does something from another thread when the time has passed, unless it ends before.
class Later {
public:
    Later(Milliseconds time, std::function<void()> action)
        : thread_([this, time, action = std::move(action)] {
              std::unique_lock lock(mutex_);
              if (!ended_.wait_for(lock, time, [this] { return isOver_; })) action();
          }) {}
    ~Later() {
        {
            const std::lock_guard lock(mutex_);
            isOver_ = true;
        }
        ended_.notify_one();
        thread_.join();
    }
    Later(const Later&) = delete;
    Later& operator=(const Later&) = delete;

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    bool isOver_ = false;
    std::thread thread_;
};

constexpr Milliseconds Patience = std::chrono::seconds(20);

class AcceptedTimeout : public Started {
protected:
    void SetUp() override {
        Started::SetUp();
        listener_ = NewListener();
    }
    void TearDown() override {
        listener_.Close();
        Started::TearDown();
    }
    // The connection is made, and waits to be accepted.
    RawPeer Connect() { return RawPeer::ConnectedTo(LocalPort(listener_)); }
    void Limit(int option, unsigned int milliseconds) {
        ASSERT_TRUE(Succeeds(SetOption(listener_, option, milliseconds)));
    }

    OwnedSocket listener_;
};

TEST_F(AcceptedTimeout, OfReceivingCountsThoughItCameAfterTheConnection) {
    const RawPeer peer = Connect();
    Limit(Winsock::OptionReceiveTimeout, 10);
    const OwnedSocket socket = Accept(listener_);
    const Later data(Patience, [&] { peer.Send("never"); });
    EXPECT_TRUE(FailsWith(10060, TryReceive(socket)));
}

TEST_F(AcceptedTimeout, OfReceivingIsNoneIfItWasTakenBackAfterTheConnection) {
    Limit(Winsock::OptionReceiveTimeout, 10);
    const RawPeer peer = Connect();
    Limit(Winsock::OptionReceiveTimeout, 0);
    const OwnedSocket socket = Accept(listener_);
    const Later data(Milliseconds(300), [&] { peer.Send("late"); });
    EXPECT_EQ(Receive(socket), "late");
}

TEST_F(AcceptedTimeout, OfSendingCountsThoughItCameAfterTheConnection) {
    RawPeer peer = Connect();
    Limit(Winsock::OptionSendTimeout, 10);
    const OwnedSocket socket = Accept(listener_);
    const Later end(Patience, [&] { peer.Reset(); });
    EXPECT_TRUE(FailsWith(10060, SendUntilFailure(socket)));
}

TEST_F(AcceptedTimeout, OfSendingIsNoneIfItWasTakenBackAfterTheConnection) {
    Limit(Winsock::OptionSendTimeout, 10);
    RawPeer peer = Connect();
    Limit(Winsock::OptionSendTimeout, 0xFFFFFFFFU);
    const OwnedSocket socket = Accept(listener_);
    const Later end(Milliseconds(300), [&] { peer.Reset(); });
    EXPECT_TRUE(FailsWith(10054, SendUntilFailure(socket)));
}

TEST_F(AcceptedTimeout, OfEachConnectionIsTheListenersOfThatMoment) {
    const RawPeer first = Connect();
    const RawPeer second = Connect();
    Limit(Winsock::OptionReceiveTimeout, 10);
    const OwnedSocket limited = Accept(listener_);
    Limit(Winsock::OptionReceiveTimeout, 0);
    const OwnedSocket patient = Accept(listener_);
    {
        const Later data(Patience, [&] { first.Send("never"); });
        EXPECT_TRUE(FailsWith(10060, TryReceive(limited)));
    }
    const Later data(Milliseconds(300), [&] { second.Send("late"); });
    EXPECT_EQ(Receive(patient), "late");
}

}  // namespace
}  // namespace Conformance
