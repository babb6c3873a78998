// Address: how one is made, and what is asked of the system for it.
#include <VelBase/ExceptionImpl.h>
#include <VelNet/Address.h>

#include <climits>
#include <stdexcept>

#include "AddressFields.h"
#include "SocketTrials.h"

namespace SocketTests {
namespace {

constexpr char NotResolvable[] =
    "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not "
    "resolvable on this machine. Connection = {";

class AddressCreation : public SocketTest {
protected:
    static Address::SpecialAddress Special(int number) {
        return static_cast<Address::SpecialAddress>(number);
    }
};

TEST_F(AddressCreation, DefaultOneIsEmptyAndAsksNothing) {
    const Address address;
    EXPECT_EQ(FieldsOf(address), (AddressFields{"", "", 0, false, "0.0.0.0"}));
    EXPECT_EQ(Transcript(), Lines());
}

TEST_F(AddressCreation, OctetsAreAskedForTheirNameAndNothingElse) {
    On::Gethostbyaddr().Returns({"10.9.9.9"}, "server.example");
    const Address address(Octets(254, 128, 1, 127), 8080);
    EXPECT_EQ(FieldsOf(address),
              (AddressFields{"254.128.1.127", "server.example", 8080, true, "254.128.1.127"}));
    EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(254.128.1.127, 4, 2)"});
}

TEST_F(AddressCreation, PortIsKeptAsGiven) {
    constexpr unsigned short Ports[] = {0, 1, 80, 255, 256, 0x1234, 0xFFFF};
    for (const unsigned short port : Ports) {
        SCOPED_TRACE(port);
        EXPECT_EQ(Address(Octets(10, 1, 2, 3), port).GetPort(), port);
        EXPECT_EQ(Address("server", port).GetPort(), port);
        EXPECT_EQ(Address(Address::LOOPBACK, port).GetPort(), port);
    }
}

TEST_F(AddressCreation, NameIsKeptWhateverItsBytes) {
    const std::string longName(5000, 'n');
    On::Gethostbyaddr()
        .Returns({}, "\xC3\xA9\xFF")
        .Returns({}, longName)
        .Returns({}, "10.1.2.3 or so");
    EXPECT_STREQ(Address(Octets(), 1).GetMachineName().c_str(), "\xC3\xA9\xFF");
    EXPECT_EQ(Address(Octets(), 1).GetMachineName().c_str(), longName);
    EXPECT_STREQ(Address(Octets(), 1).GetMachineName().c_str(), "10.1.2.3 or so");
}

// Only a failure has the dotted form stand in.
TEST_F(AddressCreation, EmptyNameThatWasFoundIsKept) {
    On::Gethostbyaddr().Returns({}, "").ReturnsRaw({.name = std::nullopt});
    EXPECT_STREQ(Address(Octets(10, 1, 2, 3), 1).GetMachineName().c_str(), "");
    EXPECT_STREQ(Address(Octets(10, 1, 2, 3), 1).GetMachineName().c_str(), "");
}

TEST_F(AddressCreation, TextsDoNotDependOnTheSystemsEntry) {
    On::Gethostbyaddr().Returns({}, "server.example");
    const Address address(Octets(10, 1, 2, 3), 80);
    Winsock::gethostbyaddr("\x0A\x01\x02\x04", 4, 2);
    EXPECT_STREQ(address.GetMachineName().c_str(), "server.example");
}

TEST_F(AddressCreation, DottedFormStandsInForANameThatIsNotFoundWhateverTheError) {
    for (const int number : ErrorNumbers()) {
        SCOPED_TRACE(number);
        On::Gethostbyaddr().Fails(number);
        ClearTranscript();
        const Address address(Octets(10, 1, 2, 3), 80);
        EXPECT_EQ(FieldsOf(address), (AddressFields{"10.1.2.3", "10.1.2.3", 80, true, "10.1.2.3"}));
        EXPECT_EQ(Transcript(), (Lines{"gethostbyaddr(10.1.2.3, 4, 2)", "WSAGetLastError()"}));
    }
    ExpectRecords({});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(AddressCreation, WhatElseTheReverseLookUpThrowsPasses) {
    On::Gethostbyaddr().Throws(std::runtime_error("gone"));
    EXPECT_THROW(Address(Octets(10, 1, 2, 3), 80), std::runtime_error);
    On::Gethostbyaddr().Throws(VelBase::ExceptionImpl<VelBase::Message>(VelBase::Message()));
    EXPECT_THROW(Address("server", 80), VelBase::ExceptionImpl<VelBase::Message>);
    On::Gethostbyaddr().Throws(std::bad_alloc());
    EXPECT_THROW(Address(Address::ANY, 80), std::bad_alloc);
    On::Gethostbyaddr().Throws(42);
    EXPECT_THROW(Address(Octets(), 80), int);
    ExpectRecords({});
}

TEST_F(AddressCreation, HostIsResolvedAndThenItsFirstAddressIsAskedForItsName) {
    On::Gethostbyname().Returns({"10.1.2.3", "10.1.2.4", "10.1.2.5"}, "alias.example");
    On::Gethostbyaddr().Returns({}, "server.example");
    const Address address("server", 80);
    EXPECT_EQ(FieldsOf(address),
              (AddressFields{"10.1.2.3", "server.example", 80, true, "10.1.2.3"}));
    EXPECT_EQ(Transcript(), (Lines{"gethostbyname(\"server\")", "gethostbyaddr(10.1.2.3, 4, 2)"}));
}

TEST_F(AddressCreation, HostWhoseAddressHasNoNameShowsTheDottedForm) {
    On::Gethostbyname().Returns({"10.1.2.3"});
    On::Gethostbyaddr().Fails(11004);
    EXPECT_EQ(FieldsOf(Address("server", 80)),
              (AddressFields{"10.1.2.3", "10.1.2.3", 80, true, "10.1.2.3"}));
    ExpectRecords({});
}

TEST_F(AddressCreation, HostIsLookedUpAsTheResolverLooksItUp) {
    Address("localhost.localdomain", 80);
    Address("", 80);
    Address(static_cast<const char*>(nullptr), 80);
    EXPECT_EQ(
        TranscriptWithout({"gethostbyaddr"}),
        (Lines{"gethostbyname(\"localhost\")", "gethostbyname(\"\")", "gethostbyname(\"\")"}));
}

TEST_F(AddressCreation, EachFailureToResolveTheHostPasses) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyname().Fails(number); },
        .operation = [] { Address("server.example", 80); },
        .text = std::string(NotResolvable) + "server.example}",
        .calls = {"gethostbyname(\"server.example\")", "WSAGetLastError()"},
    });
}

TEST_F(AddressCreation, HostWithoutAddressIsTheResolversFailure) {
    On::Gethostbyname().Returns({});
    EXPECT_EQ(Catch([] { Address("server", 80); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name "
                      u"supplied does not have an ip address. Connection = {server}",
                      -1}));
    EXPECT_EQ(CountOf("gethostbyaddr"), 0);
}

TEST_F(AddressCreation, WhatElseTheResolutionThrowsPasses) {
    On::Gethostbyname().Throws(std::runtime_error("gone"));
    EXPECT_THROW(Address("server", 80), std::runtime_error);
    On::Gethostname().Throws(std::runtime_error("gone"));
    EXPECT_THROW(Address(Address::THIS_MACHINE, 80), std::runtime_error);
}

TEST_F(AddressCreation, LoopbackAndAnyAreFixed) {
    const Address loopback(Special(0), 80);
    EXPECT_EQ(FieldsOf(loopback),
              (AddressFields{"127.0.0.1", "host.example", 80, true, "127.0.0.1"}));
    const Address any(Special(1), 81);
    EXPECT_EQ(FieldsOf(any), (AddressFields{"0.0.0.0", "host.example", 81, true, "0.0.0.0"}));
    EXPECT_EQ(Transcript(),
              (Lines{"gethostbyaddr(127.0.0.1, 4, 2)", "gethostbyaddr(0.0.0.0, 4, 2)"}));
    EXPECT_TRUE(loopback == Address(Octets(127, 0, 0, 1), 80));
}

TEST_F(AddressCreation, SpecialAddressWithoutMeaningIsLikeAny) {
    for (const int number : {3, 4, 7, -1, INT_MAX, INT_MIN}) {
        SCOPED_TRACE(number);
        ClearTranscript();
        EXPECT_EQ(FieldsOf(Address(Special(number), 80)),
                  (AddressFields{"0.0.0.0", "host.example", 80, true, "0.0.0.0"}));
        EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(0.0.0.0, 4, 2)"});
    }
}

TEST_F(AddressCreation, ThisMachineIsTheFirstAddressOfItsName) {
    On::Gethostname().Returns("workstation");
    On::Gethostbyname().Returns({"10.1.2.3", "10.1.2.4"});
    On::Gethostbyaddr().Returns({}, "workstation.example");
    EXPECT_EQ(FieldsOf(Address(Special(2), 80)),
              (AddressFields{"10.1.2.3", "workstation.example", 80, true, "10.1.2.3"}));
    EXPECT_EQ(Transcript(), (Lines{"gethostname(200)", "gethostbyname(\"workstation\")",
                                   "gethostbyaddr(10.1.2.3, 4, 2)"}));
}

TEST_F(AddressCreation, EachFailureToNameThisMachinePasses) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostname().Fails(number); },
        .operation = [] { Address(Address::THIS_MACHINE, 80); },
        .text = "VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
                "configured on this machine.",
        .calls = {"gethostname(200)", "WSAGetLastError()"},
    });
}

TEST_F(AddressCreation, EachFailureToResolveThisMachinePasses) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyname().Fails(number); },
        .operation = [] { Address(Address::THIS_MACHINE, 80); },
        .text = std::string(NotResolvable) + "scripted-host}",
        .calls = {"gethostname(200)", "gethostbyname(\"scripted-host\")", "WSAGetLastError()"},
    });
}

TEST_F(AddressCreation, ThisMachineWithoutAddressIsTheResolversFailure) {
    On::Gethostbyname().Returns({});
    EXPECT_EQ(Catch([] { Address(Address::THIS_MACHINE, 80); }).code, -1);
    EXPECT_EQ(Transcript().size(), 3U);  // the two questions and the record
}

// Attempts to make the address with each of its requests of memory failing.
template <class Script, class Make>
std::size_t ExpectEachRequestToMatter(Script script, Make make) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        script();
        exhausted = RunsOutOfMemory(n, make);
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
        if (::testing::Test::HasFailure()) break;
        Reset();
    }
    return n - 2;
}

class AddressCreationWithoutMemory : public PlatformTest {};

TEST_F(AddressCreationWithoutMemory, LeavesNothing) {
    const auto usually = [] {};
    EXPECT_GT(ExpectEachRequestToMatter(usually, [] { const Address address; }), 1U);
    EXPECT_GT(ExpectEachRequestToMatter(usually, [] { Address(Octets(10, 1, 2, 3), 80); }), 4U);
    EXPECT_GT(ExpectEachRequestToMatter(usually, [] { Address("server", 80); }), 6U);
    EXPECT_GT(ExpectEachRequestToMatter(usually, [] { Address(Address::LOOPBACK, 80); }), 4U);
    EXPECT_GT(ExpectEachRequestToMatter(usually, [] { Address(Address::THIS_MACHINE, 80); }), 7U);
}

TEST_F(AddressCreationWithoutMemory, LeavesNothingWhileTheDottedFormStandsIn) {
    EXPECT_GT(ExpectEachRequestToMatter([] { On::Gethostbyaddr().Fails(11004); },
                                        [] { Address(Octets(10, 1, 2, 3), 80); }),
              6U);
}

}  // namespace
}  // namespace SocketTests
