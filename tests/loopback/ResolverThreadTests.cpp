// The resolvers, asked by several threads at the same time.
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketAddressCache.h>
#include <loopback/ExtendedFailures.h>
#include <loopback/LoopbackTest.h>

#include <functional>
#include <thread>
#include <vector>

namespace Loopback {
namespace {

using VelNet::Octets;
using VelNet::SocketAddress;

constexpr int Threads = 8;
constexpr int ManyRounds = 100;
// Of what a name server may be asked about.
constexpr int FewRounds = 2;

// Each thread has its own number.
void InThreads(int rounds, const std::function<void(int number)>& work) {
    std::vector<std::thread> threads;
    for (int number = 0; number < Threads; ++number)
        threads.emplace_back([&work, rounds, number] {
            for (int round = 0; round < rounds; ++round)
                work(number);
        });
    for (std::thread& thread : threads)
        thread.join();
}

std::string OwnDotted(int number) {
    return "10.9.8." + std::to_string(number);
}

std::string FirstOf(const std::string& name) {
    const auto addresses = SocketAddress::GetOctetsFromMachineName(name.c_str());
    return addresses->GetOctets(0).GetAddressString().c_str();
}

// The host's name, or its failure.
std::string NameOf(const Octets& address) {
    try {
        return SocketAddress::GetMachineNameFromOctets(address).c_str();
    } catch (const VelNet::Exception& failure) {
        return std::to_string(failure.GetErrorCode());
    }
}

class ResolverThreads : public LoopbackTest {};

TEST_F(ResolverThreads, GetTheAddressesThatEachAskedFor) {
    InThreads(ManyRounds, [](int number) {
        EXPECT_EQ(FirstOf(OwnDotted(number)), OwnDotted(number));
        EXPECT_EQ(SocketAddress::ConvertDottedStringToOctets(OwnDotted(number).c_str()),
                  Octets(10, 9, 8, static_cast<unsigned char>(number)));
    });
}

TEST_F(ResolverThreads, GetTheFailureThatEachAskedFor) {
    InThreads(ManyRounds, [](int number) {
        const std::string name = UnresolvableHost() + std::to_string(number);
        const Failure failure =
            FailureOf([&] { SocketAddress::GetOctetsFromMachineName(name.c_str()); });
        EXPECT_TRUE(IsResolversNumber(failure.code)) << failure.code;
        EXPECT_NE(failure.text.find(u"{" + Widen(name) + u"}"), std::u16string::npos);
        EXPECT_EQ(FirstOf(OwnDotted(number)), OwnDotted(number));
    });
}

TEST_F(ResolverThreads, GetTheNamesThatAreTheMachines) {
    const std::string machine = SocketAddress::GetLocalMachineName().c_str();
    const std::string loopback = NameOf(LocalHost());
    InThreads(FewRounds, [&](int number) {
        EXPECT_EQ(SocketAddress::GetLocalMachineName().c_str(), machine);
        EXPECT_EQ(FirstOf("localhost"), "127.0.0.1");
        EXPECT_EQ(NameOf(LocalHost()), loopback);
        EXPECT_EQ(FirstOf(OwnDotted(number)), OwnDotted(number));
    });
}

TEST_F(ResolverThreads, HaveCachesOfTheirOwn) {
    InThreads(ManyRounds, [](int number) {
        const VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache(
            VelNet::CreateSocketAddressCache());
        for (int look = 0; look < 2; ++look) {
            const Octets found = cache->GetOctetsFromMachineName(OwnDotted(number).c_str());
            EXPECT_EQ(std::string(found.GetAddressString().c_str()), OwnDotted(number));
        }
    });
}

}  // namespace
}  // namespace Loopback
