// SocketAddress::GetOctetsFromMachineName.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

using Addresses = std::vector<std::string>;

constexpr char NotResolvable[] =
    "VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied is not "
    "resolvable on this machine. Connection = {";

class HostResolution : public SocketTest {
protected:
    static Addresses AddressesIn(const OctetsCollection& collection) {
        Addresses addresses;
        for (unsigned int index = 0; index < collection.GetCount(); ++index)
            addresses.emplace_back(collection.GetOctets(index).GetAddressString().c_str());
        return addresses;
    }

    static Addresses Resolve(const char* name) {
        return AddressesIn(*SocketAddress::GetOctetsFromMachineName(name));
    }

    static Caught FailToResolve(const char* name) {
        return Catch([&] { SocketAddress::GetOctetsFromMachineName(name); });
    }

    // The text for a host without any address; the label has no point here.
    static std::u16string WithoutAddress(const std::u16string& name) {
        return u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL The host name supplied "
               u"does not have an ip address. Connection = {" +
               name + u"}";
    }
};

TEST_F(HostResolution, MakesOneSystemCallAndNothingElse) {
    On::Gethostbyname().Returns({"10.1.2.3"});
    EXPECT_EQ(Resolve("server.example"), Addresses{"10.1.2.3"});
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"server.example\")"});
}

TEST_F(HostResolution, AddressesAreReadInMemoryOrder) {
    On::Gethostbyname().ReturnsRaw({.addresses = {"\xFE\x80\x01\x7F"}});
    EXPECT_EQ(Resolve("server"), Addresses{"254.128.1.127"});
}

TEST_F(HostResolution, OrderAndDuplicatesAreKept) {
    const Addresses addresses = {"10.0.0.3", "10.0.0.1",        "10.0.0.3",
                                 "0.0.0.0",  "255.255.255.255", "10.0.0.1"};
    On::Gethostbyname().Returns(addresses);
    EXPECT_EQ(Resolve("server"), addresses);
}

TEST_F(HostResolution, ThirtyFiveAddressesAreAllTaken) {
    Addresses addresses;
    for (int number = 1; number <= 35; ++number)
        addresses.push_back("10.0.0." + std::to_string(number));
    On::Gethostbyname().Returns(addresses);
    EXPECT_EQ(Resolve("server"), addresses);
}

TEST_F(HostResolution, LengthFamilyAndNameOfTheEntryAreNotLookedAt) {
    On::Gethostbyname()
        .ReturnsRaw({.name = std::nullopt,
                     .addresses = {std::string("\x0A\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B"
                                               "\x0C\x0D\x0E\x0F",
                                               16),
                                   std::string("\x0A\x01\x02\x04", 4)},
                     .addressType = 99,
                     .addressLength = 16})
        .ReturnsRaw({.addresses = {std::string("\x0A\x01\x02\x03", 4)},
                     .addressType = 23,
                     .addressLength = 0});
    EXPECT_EQ(Resolve("server"), (Addresses{"10.1.2.3", "10.1.2.4"}));
    EXPECT_EQ(Resolve("server"), Addresses{"10.1.2.3"});
}

TEST_F(HostResolution, ResultDoesNotDependOnTheSystemsEntry) {
    On::Gethostbyname().Returns({"10.1.2.3", "10.1.2.4"});
    const auto addresses = SocketAddress::GetOctetsFromMachineName("server");
    Winsock::gethostbyname("another");
    EXPECT_EQ(AddressesIn(*addresses), (Addresses{"10.1.2.3", "10.1.2.4"}));
}

TEST_F(HostResolution, ResultHoldsTheOnlyReference) {
    const auto addresses = SocketAddress::GetOctetsFromMachineName("server");
    EXPECT_EQ(
        dynamic_cast<const VelSynch::ReferenceCountedImpl<int>&>(*addresses).GetReferenceCount(),
        1);
}

TEST_F(HostResolution, EachResultIsItsOwn) {
    const auto first = SocketAddress::GetOctetsFromMachineName("server");
    const auto second = SocketAddress::GetOctetsFromMachineName("server");
    first->Add(Octets(1, 1, 1, 1));
    EXPECT_EQ(AddressesIn(*second), Addresses{"10.0.0.1"});
}

// Required: a prefix, and in small letters only.
TEST_F(HostResolution, NamesThatBeginWithLocalhostAreLookedUpAsJustThat) {
    for (const char* const name : {"localhost", "localhost.localdomain", "localhosting",
                                   "localhost.", "localhost localhost", "localhost\xFF"}) {
        SCOPED_TRACE(name);
        ClearTranscript();
        Resolve(name);
        EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"localhost\")"});
    }
}

TEST_F(HostResolution, AllOtherNamesAreLookedUpUnchanged) {
    for (const std::string name : {"LOCALHOST", "Localhost", "localHost", "localhosT", "localhos",
                                   "local", "ocalhost", " localhost", "my.localhost", "x", ""}) {
        SCOPED_TRACE(name);
        ClearTranscript();
        Resolve(name.c_str());
        EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"" + name + "\")"});
    }
}

TEST_F(HostResolution, NullIsLookedUpAsTheEmptyName) {
    Resolve(nullptr);
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"\")"});
}

TEST_F(HostResolution, LongNameIsLookedUpWhole) {
    const std::string name(5000, 'n');
    Resolve(name.c_str());
    EXPECT_EQ(LastEventOf("gethostbyname").bytes, name);
}

TEST_F(HostResolution, NameThatIsNotUtf8IsLookedUpUnchanged) {
    Resolve("\xC3\xA9\xFF");
    EXPECT_EQ(LastEventOf("gethostbyname").bytes, "\xC3\xA9\xFF");
}

TEST_F(HostResolution, EachFailureIsReported) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyname().Fails(number); },
        .operation = [] { SocketAddress::GetOctetsFromMachineName("server.example"); },
        .text = std::string(NotResolvable) + "server.example}",
        .calls = {"gethostbyname(\"server.example\")", "WSAGetLastError()"},
    });
}

TEST_F(HostResolution, UnknownHostIsToldWithItsNameAndTheNumberAsOneUnit) {
    On::Gethostbyname().Fails(11001);
    const Caught caught = FailToResolve("server.example");
    EXPECT_EQ(caught.text,
              u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied "
              u"is not resolvable on this machine. Connection = {server.example}, errno = \u2AF9 "
              u"host not found");
    EXPECT_EQ(caught.code, 11001);
    ExpectRecords({FailureRecord(caught.text)});
}

TEST_F(HostResolution, NumberWithoutLowBitsEndsTheText) {
    On::Gethostbyname().Fails(65536);
    EXPECT_EQ(FailToResolve("x"),
              (Caught{true,
                      u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name "
                      u"supplied is not resolvable on this machine. Connection = {x}, errno = ",
                      -1}));
}

TEST_F(HostResolution, FailureShowsTheNameThatWasLookedUp) {
    On::Gethostbyname().Fails(11001).Fails(11001).Fails(11001);
    EXPECT_EQ(FailToResolve("localhost.localdomain"),
              FailureOf(std::string(NotResolvable) + "localhost}", 11001));
    EXPECT_EQ(FailToResolve("LOCALHOST"),
              FailureOf(std::string(NotResolvable) + "LOCALHOST}", 11001));
    EXPECT_EQ(FailToResolve(nullptr), FailureOf(std::string(NotResolvable) + "}", 11001));
}

TEST_F(HostResolution, FailureShowsTheNameConvertedFromUtf8) {
    On::Gethostbyname().Fails(11001);
    EXPECT_EQ(FailToResolve("\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\xFFz").text,
              u"VelNet::SocketAddress::GetOctetsFromMachineName() - FAIL. The host name supplied "
              u"is not resolvable on this machine. Connection = "
              u"{\u00E9\u20AC\U0001F600\uFFFDz}, errno = \u2AF9 host not found");
}

// The record has room for all of it.
TEST_F(HostResolution, FailureWithALongNameIsCutInTheExceptionAlone) {
    const std::string name(5000, 'n');
    On::Gethostbyname().Fails(11001);
    const Caught caught = FailToResolve(name.c_str());
    const std::u16string whole = FailureText(NotResolvable + name + "}", 11001);
    EXPECT_EQ(caught.text, whole.substr(0, 2999));
    EXPECT_EQ(caught.code, 11001);
    ExpectRecords({FailureRecord(whole)});
}

TEST_F(HostResolution, FailureTextGrowsInRoomMadeBeforehand) {
    On::Gethostbyname().Fails(11001);
    const Allocations::Mark mark;
    FailToResolve("server.example");
    EXPECT_EQ(FailureTextBlocksSince(mark), 1);
}

TEST_F(HostResolution, HostWithoutAddressIsToldWithoutPointAndNumber) {
    On::Gethostbyname().Returns({});
    const std::u16string text = WithoutAddress(u"server");
    EXPECT_EQ(FailToResolve("server"), (Caught{true, text, -1}));
    EXPECT_EQ(TranscriptWithRecordsShortened(), (Lines{"gethostbyname(\"server\")", "LogMessage"}));
    ExpectRecords({FailureRecord(text)});
}

TEST_F(HostResolution, HostWithoutAddressIsNotLoggedWhileErrorIsOff) {
    SetRouterFlag(ErrorCategory, 0);
    On::Gethostbyname().Returns({});
    EXPECT_EQ(FailToResolve("server"), (Caught{true, WithoutAddress(u"server"), -1}));
    EXPECT_EQ(Transcript(), Lines{"gethostbyname(\"server\")"});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(HostResolution, HostWithoutAddressIsToldByTheNameThatWasLookedUp) {
    On::Gethostbyname().Returns({}).Returns({});
    EXPECT_EQ(FailToResolve("localhosting").text, WithoutAddress(u"localhost"));
    EXPECT_EQ(FailToResolve("\xC3\xA9").text, WithoutAddress(u"\u00E9"));
}

TEST_F(HostResolution, DoesNotStartTheLayer) {
    BringLayerDown();
    ClearTranscript();
    EXPECT_EQ(Resolve("server"), Addresses{"10.0.0.1"});
    On::Gethostbyname().Fails(10093);
    EXPECT_EQ(FailToResolve("server"), FailureOf(std::string(NotResolvable) + "server}", 10093));
    EXPECT_EQ(Transcript(), (Lines{"gethostbyname(\"server\")", "gethostbyname(\"server\")",
                                   "WSAGetLastError()"}));
}

TEST_F(HostResolution, ExhaustedMemoryLeavesNothing) {
    const std::string name(100, 'n');
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { SocketAddress::GetOctetsFromMachineName(name.c_str()); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 4U);
}

TEST_F(HostResolution, ExhaustedMemoryWhileAFailureIsToldLeavesNothing) {
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Gethostbyname().Fails(11001);
        exhausted = RunsOutOfMemory(n, [] { FailToResolve("server"); });
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 3U);
    n = 1;
    for (bool exhausted = true; exhausted; ++n) {
        On::Gethostbyname().Returns({});
        exhausted = RunsOutOfMemory(n, [] { FailToResolve("server"); });
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 3U);
}

}  // namespace
}  // namespace SocketTests
