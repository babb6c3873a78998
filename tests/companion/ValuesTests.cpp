// Addresses as keys and as text.
#include <VelCompanion/Values.h>
#include <VelNet/SocketError.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Companion {
namespace {

using VelNet::Octets;
using VelNet::SocketAddress;

template <class Value>
std::string Written(const Value& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TEST(Values, OfOctetsAreOrderedByOctets) {
    const std::vector<Octets> ascending = {Octets(), Octets(0, 0, 0, 1), Octets(0, 0, 1, 0),
                                           Octets(1, 0, 0, 0), Octets(255, 0, 0, 0)};
    for (std::size_t left = 0; left < ascending.size(); ++left) {
        for (std::size_t right = 0; right < ascending.size(); ++right) {
            EXPECT_EQ(ascending[left] < ascending[right], left < right);
            EXPECT_EQ(ascending[left] == ascending[right], left == right);
            EXPECT_EQ(ascending[left] != ascending[right], left != right);
        }
    }
}

TEST(Values, OfSocketAddressesAreOrderedByAddressThenPort) {
    const std::vector<SocketAddress> ascending = {
        SocketAddress(), SocketAddress(Octets(), 1), SocketAddress(Octets(), 65535),
        SocketAddress(Octets(0, 0, 0, 1), 0), SocketAddress(Octets(1, 0, 0, 0), 0)};
    for (std::size_t left = 0; left < ascending.size(); ++left) {
        for (std::size_t right = 0; right < ascending.size(); ++right) {
            EXPECT_EQ(ascending[left] < ascending[right], left < right);
            EXPECT_EQ(ascending[left] == ascending[right], left == right);
            EXPECT_EQ(ascending[left] != ascending[right], left != right);
        }
    }
}

TEST(Values, AreKeys) {
    std::map<SocketAddress, int> ordered;
    std::unordered_map<SocketAddress, int> hashed;
    std::set<Octets> hosts;
    std::unordered_set<Octets> hashedHosts;
    for (unsigned char host = 0; host < 100; ++host) {
        const Octets octets(10, 0, 0, host);
        for (unsigned int port = 1; port <= 10; ++port) {
            ++ordered[SocketAddress(octets, port)];
            ++hashed[SocketAddress(octets, port)];
            hosts.insert(octets);
            hashedHosts.insert(octets);
        }
    }
    EXPECT_EQ(ordered.size(), 1000U);
    EXPECT_EQ(hashed.size(), 1000U);
    EXPECT_EQ(hosts.size(), 100U);
    EXPECT_EQ(hashedHosts.size(), 100U);
    EXPECT_EQ(hashed.at(SocketAddress(Octets(10, 0, 0, 7), 3)), 1);
}

TEST(Values, AreWrittenAsPeopleWriteThem) {
    EXPECT_EQ(Written(Octets(127, 0, 0, 1)), "127.0.0.1");
    EXPECT_EQ(Written(SocketAddress(Octets(10, 1, 2, 3), 4000)), "10.1.2.3:4000");
    EXPECT_EQ(Written(SocketAddress()), "0.0.0.0:0");
}

// An operator for Octets is no operator for the numbers that convert to one.
TEST(Values, ThatAreNumbersStayNumbers) {
    EXPECT_EQ(Written(VelNet::SOCKET_ERR_TIMEDOUT), "10060");
}

}  // namespace
}  // namespace Companion
