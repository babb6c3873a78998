// SocketAddress::GetMachineNameFromOctets.
#include "SocketTrials.h"

namespace SocketTests {
namespace {

class ReverseResolution : public SocketTest {
protected:
    static std::string NameOf(const Octets& octets) {
        return SocketAddress::GetMachineNameFromOctets(octets).c_str();
    }
};

TEST_F(ReverseResolution, AsksForFourBytesInOctetOrderOfTheIpv4Family) {
    NameOf(Octets(254, 128, 1, 127));
    EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(254.128.1.127, 4, 2)"});
    EXPECT_EQ(LastEventOf("gethostbyaddr").bytes, "\xFE\x80\x01\x7F");
}

TEST_F(ReverseResolution, OfficialNameIsReturned) {
    On::Gethostbyaddr().Returns({"10.9.9.9"}, "server.example");
    EXPECT_EQ(NameOf(Octets(10, 1, 2, 3)), "server.example");
}

TEST_F(ReverseResolution, RestOfTheEntryIsNotLookedAt) {
    On::Gethostbyaddr().ReturnsRaw({.name = "server.example",
                                    .addressType = 99,
                                    .addressLength = 16,
                                    .nullAddressList = true});
    EXPECT_EQ(NameOf(Octets(10, 1, 2, 3)), "server.example");
}

TEST_F(ReverseResolution, NameIsReturnedWhateverItsBytes) {
    const std::string longName(5000, 'n');
    On::Gethostbyaddr().Returns({}, "").Returns({}, "\xC3\xA9\xFF").Returns({}, longName);
    EXPECT_EQ(NameOf(Octets()), "");
    EXPECT_EQ(NameOf(Octets()), "\xC3\xA9\xFF");
    EXPECT_EQ(NameOf(Octets()), longName);
}

TEST_F(ReverseResolution, NullNameIsTheEmptyName) {
    On::Gethostbyaddr().ReturnsRaw({.name = std::nullopt});
    EXPECT_EQ(NameOf(Octets(10, 1, 2, 3)), "");
}

TEST_F(ReverseResolution, ResultDoesNotDependOnTheSystemsEntry) {
    On::Gethostbyaddr().Returns({}, "server.example");
    const VelBase::ReturnString name = SocketAddress::GetMachineNameFromOctets(Octets(10, 1, 2, 3));
    Winsock::gethostbyaddr("\x0A\x01\x02\x04", 4, 2);
    EXPECT_STREQ(name.c_str(), "server.example");
}

// Required: this failure alone is not logged.
TEST_F(ReverseResolution, EachFailureIsThrownWithoutALog) {
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostbyaddr().Fails(number); },
        .operation = [] { NameOf(Octets(10, 1, 2, 3)); },
        .text = "VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address supplied is "
                "not resolvable on this machine. Connection = {10.1.2.3}",
        .calls = {"gethostbyaddr(10.1.2.3, 4, 2)", "WSAGetLastError()"},
        .isLogged = false,
    });
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(ReverseResolution, AddressWithoutNameIsToldWithoutPointAndWithTheNumberAsOneUnit) {
    On::Gethostbyaddr().Fails(11004);
    EXPECT_EQ(Catch([] { NameOf(Octets(255, 0, 255, 0)); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address "
                      u"supplied is not resolvable on this machine. Connection = {255.0.255.0}, "
                      u"errno = \u2AFC Valid name, no data record of requested type",
                      11004}));
}

TEST_F(ReverseResolution, NumberWithoutLowBitsEndsTheText) {
    On::Gethostbyaddr().Fails(65536);
    EXPECT_EQ(Catch([] { NameOf(Octets()); }),
              (Caught{true,
                      u"VelNet::SocketAddress::GetMachineNameFromOctets() - FAIL The address "
                      u"supplied is not resolvable on this machine. Connection = {0.0.0.0}, "
                      u"errno = ",
                      -1}));
}

TEST_F(ReverseResolution, DoesNotStartTheLayer) {
    BringLayerDown();
    ClearTranscript();
    EXPECT_EQ(NameOf(Octets(10, 1, 2, 3)), "host.example");
    EXPECT_EQ(Transcript(), Lines{"gethostbyaddr(10.1.2.3, 4, 2)"});
}

TEST_F(ReverseResolution, ExhaustedMemoryLeavesNothing) {
    const Octets octets(10, 1, 2, 3);
    const Allocations::Mark mark;
    std::size_t n = 1;
    for (; RunsOutOfMemory(n, [&] { SocketAddress::GetMachineNameFromOctets(octets); }); ++n)
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    EXPECT_GT(n, 2U);
    // The first request is the address that the operation takes.
    n = 2;
    for (bool exhausted = true; exhausted; ++n) {
        On::Gethostbyaddr().Fails(11004);
        exhausted = RunsOutOfMemory(
            n, [&] { Catch([&] { SocketAddress::GetMachineNameFromOctets(octets); }); });
        EXPECT_EQ(mark.LiveBlocks(), 0) << n;
    }
    EXPECT_GT(n, 4U);
}

}  // namespace
}  // namespace SocketTests
