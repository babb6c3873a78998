// Sixteen threads use sockets that four others close and create again all the time, under numbers
// that the system gives out again at once. Each answer is held against a model of what may have
// happened.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "conformance/Scene.h"

namespace Conformance {
namespace {

constexpr int Users = 16;
constexpr int Closers = 4;
constexpr int SlotsOfACloser = 2;
constexpr int DatagramsOfASocket = 12;
constexpr int RoundsOfAUser = VELSOCK_CLOSING_ROUNDS / Users;
constexpr std::size_t MostSockets = 1U << 22;

// One life of a socket number.
struct Life {
    std::atomic<bool> closing;
    std::uint32_t handle;
    std::uint16_t port;
};

struct Storm {
    std::unique_ptr<Life[]> lives{new Life[MostSockets]()};
    std::atomic<std::uint64_t> count = 0;
    std::atomic<int> usersLeft = Users;
    std::atomic<int> woken = 0;
    std::atomic<bool> hasFault = false;
    std::mutex faultsLock;
    std::vector<std::string> faults;

    void Report(const std::string& fault) {
        hasFault = true;
        const std::lock_guard guard(faultsLock);
        if (faults.size() < 10) faults.push_back(fault);
    }
};

// Where the users find a socket: the number of its life.
using Slot = std::atomic<std::uint64_t>;

// A datagram socket that has sent its own number to itself a few times.
std::uint64_t BeginLife(Storm& storm) {
    OwnedSocket socket = NewBoundDatagram();
    const Winsock::AddressIpv4 own = LocalAddress(socket);
    const std::uint64_t number = storm.count++;
    if (number >= MostSockets) std::abort();
    Life& life = storm.lives[number];
    life.handle = static_cast<std::uint32_t>(socket.Get());
    life.port = static_cast<std::uint16_t>(PortOf(own));
    for (int index = 0; index < DatagramsOfASocket; ++index) {
        Winsock::sendto(socket.Get(), reinterpret_cast<const char*>(&number), sizeof number, 0,
                        &own, sizeof own);
    }
    socket.Take();
    return number;
}

void EndLife(Storm& storm, std::uint64_t number) {
    storm.lives[number].closing = true;
    if (Winsock::closesocket(storm.lives[number].handle) != 0) storm.Report("a close failed");
}

void CloseAndBeginAnew(Storm& storm, Slot* slots) {
    std::minstd_rand random(static_cast<unsigned int>(slots->load() + 1));
    while (storm.usersLeft > 0) {
        Slot& slot = slots[random() % SlotsOfACloser];
        EndLife(storm, slot);
        slot = BeginLife(storm);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 50));
    }
    for (int index = 0; index < SlotsOfACloser; ++index)
        EndLife(storm, slots[index]);
}

// Judges the calls of one user on the socket that it found in a slot.
class Round {
public:
    Round(Storm& storm, std::uint64_t number)
        : storm_(storm), number_(number), handle_(storm.lives[number].handle) {}

    void Receive() {
        std::uint64_t received = 0;
        char* const buffer = reinterpret_cast<char*>(&received);
        const int result = Winsock::recv(handle_, buffer, sizeof received, 0);
        if (result < 0) return JudgeFailure("recv", Winsock::WSAGetLastError());
        if (result != sizeof received) return storm_.Report("a datagram of another length");
        JudgeLife("recv", received);
    }

    void Select() {
        Winsock::HandleSet set = {.count = 1, .handles = {handle_}};
        const int result = Winsock::select(0, &set, nullptr, nullptr, nullptr);
        if (result < 0) return JudgeFailure("select", Winsock::WSAGetLastError());
        if (set.count != 1 || set.handles[0] != handle_) storm_.Report("another set");
    }

    void AskForTheName() {
        Winsock::AddressIpv4 address = {};
        int length = sizeof address;
        const int result = Winsock::getsockname(handle_, &address, &length);
        if (result < 0) return JudgeFailure("getsockname", Winsock::WSAGetLastError());
        if (!IsClosing() && PortOf(address) != storm_.lives[number_].port) {
            storm_.Report("another socket's port");
        }
    }

private:
    bool IsClosing() const { return storm_.lives[number_].closing; }

    // Only a socket that is being closed ends calls, and only a closed one is not a socket. The
    // number's next socket may not have been bound yet.
    void JudgeFailure(const std::string& call, int error) {
        if (error == 10004) ++storm_.woken;
        const bool mayBe = IsClosing() && (error == 10004 || error == 10038 || error == 10022);
        if (!mayBe) storm_.Report(call + " failed with " + std::to_string(error));
    }

    // What comes is of the same number, and of a later life only if this one is over: then the call
    // began on the later one.
    void JudgeLife(const std::string& call, std::uint64_t received) {
        const bool own = received == number_;
        const bool later = received > number_ && received < storm_.count && IsClosing() &&
                           storm_.lives[received].handle == handle_;
        if (!own && !later) storm_.Report(call + " met a stranger");
    }

    Storm& storm_;
    std::uint64_t number_;
    Winsock::Handle handle_;
};

void Use(Storm& storm, Slot* slots, unsigned int seed) {
    std::minstd_rand random(seed);
    for (int count = 0; count < RoundsOfAUser && !storm.hasFault; ++count) {
        Round round(storm, slots[random() % (Closers * SlotsOfACloser)]);
        switch (random() % 4) {
            case 0:
                round.Select();
                break;
            case 1:
                round.AskForTheName();
                break;
            default:
                round.Receive();
        }
    }
    --storm.usersLeft;
}

// Ends the program when the storm does not end by itself: its threads cannot be ended.
void RunWithin(std::chrono::minutes limit, const std::function<void()>& scene) {
    std::packaged_task<void()> task(scene);
    std::future<void> end = task.get_future();
    std::thread thread(std::move(task));
    if (end.wait_for(limit) != std::future_status::ready) {
        std::fputs("A call that nothing wakes is still waiting\n", stderr);
        std::abort();
    }
    thread.join();
    end.get();
}

void RunStorm(Storm& storm) {
    std::vector<Slot> slots(Closers * SlotsOfACloser);
    for (Slot& slot : slots)
        slot = BeginLife(storm);
    std::vector<std::thread> threads;
    for (int index = 0; index < Closers; ++index)
        threads.emplace_back([&, index] {
            CloseAndBeginAnew(storm, &slots[static_cast<std::size_t>(index * SlotsOfACloser)]);
        });
    for (unsigned int index = 0; index < Users; ++index)
        threads.emplace_back([&, index] { Use(storm, slots.data(), index + 1); });
    for (std::thread& thread : threads)
        thread.join();
}

using ClosingStorm = Started;

TEST_F(ClosingStorm, LetsNoCallMeetTheNumbersNextOwner) {
    Storm storm;
    RunWithin(std::chrono::minutes(4), [&] { RunStorm(storm); });
    for (const std::string& fault : storm.faults)
        ADD_FAILURE() << fault;
    std::printf("%d rounds, %llu sockets, %d calls woken\n", RoundsOfAUser * Users,
                static_cast<unsigned long long>(storm.count), storm.woken.load());
    EXPECT_GT(storm.woken, 0);
}

}  // namespace
}  // namespace Conformance
