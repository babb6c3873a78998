// Endpoints with their names, and look-ups that are remembered.
#include <VelNet/Address.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketAddressCache.h>
#include <loopback/ExtendedFailures.h>
#include <loopback/LoopbackTest.h>
#include <loopback/Machine.h>

namespace Loopback {
namespace {

using VelNet::Address;
using VelNet::SocketAddress;

class Addresses : public LoopbackTest {
protected:
    Addresses() { EnableOnly({Error}); }
};

std::string IpOf(const Address& address) {
    return address.GetIpAddress().c_str();
}

std::string NameOf(const Address& address) {
    return address.GetMachineName().c_str();
}

// The host's name, or the dotted form where it has none.
std::string NameOrDotted(const VelNet::Octets& octets) {
    try {
        return SocketAddress::GetMachineNameFromOctets(octets).c_str();
    } catch (const VelNet::Exception&) {
        return octets.GetAddressString().c_str();
    }
}

VelNet::Octets FirstOf(const char* host) {
    return SocketAddress::GetOctetsFromMachineName(host)->GetOctets(0);
}

TEST_F(Addresses, AnEndpointKnowsItsNameAndItsDottedForm) {
    const Address address(LocalHost(), 80);
    EXPECT_EQ(IpOf(address), "127.0.0.1");
    EXPECT_EQ(NameOf(address), NameOrDotted(LocalHost()));
    EXPECT_EQ(address.GetOctets(), LocalHost());
    EXPECT_EQ(address.GetPort(), 80);
    EXPECT_TRUE(address.IsInitialized());
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(Addresses, AHostGivesItsFirstAddress) {
    const Address address("localhost", 65535);
    EXPECT_EQ(IpOf(address), "127.0.0.1");
    EXPECT_EQ(address.GetPort(), 65535);
    EXPECT_TRUE(address == Address(LocalHost(), 65535));
    EXPECT_TRUE(address != Address(LocalHost(), 65534));
}

TEST_F(Addresses, SpecialAddressesStandForTheirOctets) {
    EXPECT_TRUE(Address(Address::LOOPBACK, 7) == Address(LocalHost(), 7));
    EXPECT_EQ(IpOf(Address(Address::ANY, 7)), "0.0.0.0");
    EXPECT_EQ(IpOf(Address(static_cast<Address::SpecialAddress>(7), 7)), "0.0.0.0");
    EXPECT_EQ(Address(Address::THIS_MACHINE, 7).GetOctets(),
              FirstOf(SocketAddress::GetLocalMachineName().c_str()));
}

TEST_F(Addresses, CopiesAreEqualAndInitialized) {
    const Address empty;
    EXPECT_FALSE(empty.IsInitialized());
    Address copy = empty;
    EXPECT_TRUE(copy.IsInitialized());
    EXPECT_TRUE(copy == empty);
    EXPECT_EQ(IpOf(copy), "");
    EXPECT_EQ(NameOf(copy), "");

    const Address other(LocalHost(), 80);
    copy = other;
    EXPECT_TRUE(copy == other);
    EXPECT_EQ(NameOf(copy), NameOf(other));
    EXPECT_EQ(copy.GetOctets(), LocalHost());
}

TEST_F(Addresses, AHostThatDoesNotResolveMakesNoEndpoint) {
    const std::string host = UnresolvableHost();
    const Failure failure = FailureOf([&] { Address(host.c_str(), 80); });
    EXPECT_EQ(failure, FailureOf([&] { FirstOf(host.c_str()); }));
    EXPECT_NE(failure.code, 0);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}, {Error, failure.text}}));
}

class AddressCache : public Addresses {
protected:
    AddressCache() : cache_(VelNet::CreateSocketAddressCache()) {}

    std::string AddressOf(const char* host) {
        return cache_->GetOctetsFromMachineName(host).GetAddressString().c_str();
    }
    std::string NameOfLocalHost() { return cache_->GetMachineNameFromOctets(LocalHost()).c_str(); }

private:
    const VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache_;
};

TEST_F(AddressCache, AnswersAreTheResolvers) {
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(AddressOf("localhost"), "127.0.0.1");
        EXPECT_EQ(AddressOf("10.1.2.3"), "10.1.2.3");
    }
    EXPECT_EQ(AddressOf(""), std::string(FirstOf("").GetAddressString().c_str()));
}

TEST_F(AddressCache, NamesAreTheResolversOrItsFailure) {
    std::string expected;
    const Failure ofResolver =
        FailureOf([&] { expected = SocketAddress::GetMachineNameFromOctets(LocalHost()).c_str(); });
    for (int round = 0; round < 2; ++round) {
        std::string name;
        EXPECT_EQ(FailureOf([&] { name = NameOfLocalHost(); }), ofResolver);
        EXPECT_EQ(name, expected);
    }
    EXPECT_EQ(Sink().Take(), Records{});
}

TEST_F(AddressCache, AFailureIsNotRemembered) {
    const std::string host = UnresolvableHost();
    const Failure failure = FailureOf([&] { AddressOf(host.c_str()); });
    EXPECT_NE(failure.code, 0);
    EXPECT_EQ(FailureOf([&] { AddressOf(host.c_str()); }), failure);
    EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}, {Error, failure.text}}));
}

// An empty name is this computer's, whose name here is an address.
TEST_F(AddressCache, AnAnswerStaysThoughTheSystemsChanges) {
    {
        const Machine::Name name("10.1.2.3");
        if (FirstOf("") != VelNet::Octets(10, 1, 2, 3)) {
            GTEST_SKIP() << "the system lets no test change what it answers";
        }
        EXPECT_EQ(AddressOf(""), "10.1.2.3");
    }
    EXPECT_FALSE(FirstOf("") == VelNet::Octets(10, 1, 2, 3));
    EXPECT_EQ(AddressOf(""), "10.1.2.3");
}

}  // namespace
}  // namespace Loopback
