#include <Socket/OwnSocket.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <thread>
#include <vector>

namespace {

class NumberedSocket : public VelNet::OwnSocket {
public:
    NumberedSocket() : OwnSocket(Winsock::InvalidSocket) {}
};

TEST(OwnSocketNumber, EachSocketHasItsOwn) {
    const NumberedSocket one;
    const NumberedSocket other;
    const unsigned int first = one.ConnectionNumber();
    EXPECT_NE(first, 0U);
    EXPECT_EQ(other.ConnectionNumber(), first + 1);
    EXPECT_EQ(one.ConnectionNumber(), first);
}

TEST(OwnSocketNumber, ThreadsThatAskAtOnceGetTheSame) {
    for (int round = 0; round < 200; ++round) {
        const NumberedSocket socket;
        std::array<unsigned int, 4> numbers = {};
        std::atomic<std::size_t> missing = numbers.size();
        std::vector<std::jthread> threads;
        for (unsigned int& number : numbers) {
            threads.emplace_back([&] {
                --missing;
                while (missing != 0)
                    std::this_thread::yield();
                number = socket.ConnectionNumber();
            });
        }
        threads.clear();
        for (const unsigned int number : numbers)
            EXPECT_EQ(number, socket.ConnectionNumber());
    }
}

}  // namespace
