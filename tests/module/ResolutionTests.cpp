// Host names: what the system's resolvers are asked, and what their answers become.
#include <VelNet/SocketAddress.h>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class Resolution : public LayerTest {};

constexpr char NotResolvable[] =
    "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not "
    "resolvable on this machine. Connection = {";

Lines AddressesOf(const char* name) {
    const auto found = SocketAddress::GetOctetsFromMachineName(name);
    Lines addresses;
    for (unsigned int index = 0; index < found->GetCount(); ++index)
        addresses.emplace_back(found->GetOctets(index).GetAddressString().c_str());
    return addresses;
}

TEST_F(Resolution, NameIsPassedAsItStandsAndEveryAddressComesBack) {
    On::Gethostbyname().Returns({"10.0.0.1", "10.0.0.2", "10.0.0.1"});
    EXPECT_EQ(AddressesOf("host\x80.example"), (Lines{"10.0.0.1", "10.0.0.2", "10.0.0.1"}));
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"host\\x80.example\")"});
}

TEST_F(Resolution, WhatBeginsLikeLocalhostIsLookedUpAsThat) {
    for (const char* const name : {"localhost", "localhost.localdomain", "localhosts"})
        AddressesOf(name);
    EXPECT_EQ(Transcript(), Lines(3, "gethostbyname(\"localhost\")"));
    AddressesOf("LOCALHOST");
    EXPECT_EQ(LastEventOf("gethostbyname").text, "gethostbyname(\"LOCALHOST\")");
}

TEST_F(Resolution, EachFailureOfANameIsTold) {
    ExpectEachFailure({.failWith = [](int number) { On::Gethostbyname().Fails(number); },
                       .operation = [] { AddressesOf("nowhere"); },
                       .head = std::string(NotResolvable) + "nowhere}",
                       .calls = {"gethostbyname(\"nowhere\")", "WSAGetLastError()"}});
}

TEST_F(Resolution, NameWithoutAddressesIsAFailureWithoutANumber) {
    On::Gethostbyname().Returns({});
    EXPECT_EQ(FailureOf([] { AddressesOf("empty"); }),
              (Failure{u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name "
                       u"supplied does not have an ip address. Connection = {empty}",
                       -1}));
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

TEST_F(Resolution, AddressIsPassedAsFourBytesOfIpv4) {
    On::Gethostbyaddr().Returns({}, "official.example");
    EXPECT_STREQ(SocketAddress::GetMachineNameFromOctets(OctetsOf("10.1.2.3")).c_str(),
                 "official.example");
    EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(10.1.2.3, 4, 2)"});
    EXPECT_EQ(LastEventOf("gethostbyaddr").bytes, AddressBytes("10.1.2.3"));
}

TEST_F(Resolution, EachFailureOfAnAddressIsThrownAndNotRecorded) {
    ExpectEachFailure(
        {.failWith = [](int number) { On::Gethostbyaddr().Fails(number); },
         .operation = [] { SocketAddress::GetMachineNameFromOctets(OctetsOf("10.1.2.3")); },
         .head = "VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is "
                 "not resolvable on this machine. Connection = {10.1.2.3}",
         .calls = {"gethostbyaddr(10.1.2.3, 4, 2)", "WSAGetLastError()"},
         .isLogged = false});
}

TEST_F(Resolution, DottedTextIsTheSystemsBusiness) {
    On::InetAddr().Returns(0x04030201);
    EXPECT_EQ(SocketAddress::ConvertDottedStringToOctets("any text"), OctetsOf("1.2.3.4"));
    EXPECT_EQ(Transcript(), Lines{"inet_addr(\"any text\")"});
}

TEST_F(Resolution, RefusedTextIsAFailureWithoutANumber) {
    for (const char* const text : {"10.1.2", "255.255.255.255", ""}) {
        ClearTranscript();
        const std::u16string told =
            u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is "
            u"not an Internet Protocol dotted address: ";
        EXPECT_EQ(FailureOf([&] { SocketAddress::ConvertDottedStringToOctets(text); }),
                  (Failure{told + Widen(text), -1}));
        EXPECT_EQ(CountOf("WSAGetLastError"), 0);
    }
}

TEST_F(Resolution, OwnNameHasRoomForTwoHundredBytes) {
    On::Gethostname().Returns(std::string(199, 'n'));
    EXPECT_EQ(SocketAddress::GetLocalMachineName().c_str(), std::string(199, 'n'));
    EXPECT_EQ(Transcript(), Lines{"gethostname(200)"});
}

TEST_F(Resolution, EachFailureOfTheOwnNameIsTold) {
    ExpectEachFailure({.failWith = [](int number) { On::Gethostname().Fails(number); },
                       .operation = [] { SocketAddress::GetLocalMachineName(); },
                       .head = "VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name "
                               "is not configured on this machine.",
                       .calls = {"gethostname(200)", "WSAGetLastError()"}});
}

}  // namespace
}  // namespace ModuleTests
