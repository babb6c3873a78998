// SocketXt::SetSocketForMulticast by group text.
#include <algorithm>
#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

constexpr char Function[] = "VelNet::SocketXtImpl::SetSocketForMulticast";
constexpr char Description[] = "cannot set option for multicast";

const XtFailure NotResolved{Function, Description, "::getaddrinfo"};
const XtFailure NotJoined{Function, Description, "::setsockopt(IP_ADD_MEMBERSHIP)"};
const XtFailure NotLeft{Function, Description, "::setsockopt(IP_DROP_MEMBERSHIP)"};

constexpr char Resolution[] = "getaddrinfo(\"239.1.2.3\", null, {0, 0, 2, 0})";

// How the requests stand in the transcript.
constexpr char Ipv4Request[] = "0xEF01020300000000, 8)";
constexpr char Ipv6Request[] = "0xFF02000000000000000000000000000100000000, 20)";

std::string Ipv4Call(const std::string& option = "0xC") {
    return "setsockopt(1001, 0x0, " + option + ", " + Ipv4Request;
}

std::string Ipv6Call(const std::string& option = "0xC") {
    return "setsockopt(1001, 0x29, " + option + ", " + Ipv6Request;
}

ListedAddress Ipv4Group() {
    return {Winsock::FamilyIpv4, "239.1.2.3", 0};
}

ListedAddress Ipv6Group() {
    return {Winsock::FamilyIpv6, "FF02::1", 0};
}

// Neither family's, whatever its bytes look like.
ListedAddress OtherAddress(int family) {
    return {family, SocketAddressBytes("239.1.2.3", 0)};
}

class XtMulticast : public XtTest {
protected:
    void TearDown() override {
        // Every list stays open, and the system has been asked to take none back.
        EXPECT_EQ(givenBack_, 0);
        ForgetOpenAddressLists();
        XtTest::TearDown();
    }

    void SetUp() override {
        XtTest::SetUp();
        Observe("freeaddrinfo", [this](const Event&) { ++givenBack_; });
    }

    static Caught Join(SocketXt& socket, int mode = 0) {
        return Catch([&] { socket.SetSocketForMulticast("239.1.2.3", mode); });
    }

private:
    int givenBack_ = 0;
};

TEST_F(XtMulticast, JoinsAnIpv4GroupOnTheDefaultInterface) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo().Returns({Ipv4Group()});
    EXPECT_EQ(Join(*socket), Caught());
    EXPECT_EQ(Transcript(), (Lines{Resolution, Ipv4Call()}));
    EXPECT_EQ(LastEventOf("setsockopt").bytes, AddressBytes("239.1.2.3") + AddressBytes("0.0.0.0"));
    EXPECT_EQ(Ledger(), (Lines{"VelLog", "VelRegistry", "VelSynch", "address list 1",
                               "router Network, Connection Trace", "router Network, Error",
                               "router Network, Packet Trace",
                               "router Network, Verbose Packet Trace", "socket 1001", "start-up"}));
    ExpectRecords({});
}

TEST_F(XtMulticast, JoinsAnIpv6GroupOnTheDefaultInterface) {
    const auto socket = MakeDatagramXt(SocketXt::FAMILY_IPV6);
    // Only the group counts, neither port nor flow nor scope.
    On::Getaddrinfo().Returns({{23, SocketAddressBytesIpv6("FF02::1", 80, 3, 7)}});
    EXPECT_EQ(Join(*socket), Caught());
    EXPECT_EQ(Transcript(), (Lines{Resolution, Ipv6Call()}));
    EXPECT_EQ(LastEventOf("setsockopt").bytes, Ipv6AddressBytes("FF02::1") + std::string(4, '\0'));
}

TEST_F(XtMulticast, ModeChoosesTheOption) {
    const auto socket = MakeDatagramXt();
    const std::pair<int, const char*> modes[] = {
        {0, "0xC"},  {1, "0xD"},   {2, "0x0"},     {7, "0x0"},       {-1, "0x0"},     {12, "0x0"},
        {13, "0x0"}, {256, "0x0"}, {65536, "0x0"}, {INT_MIN, "0x0"}, {INT_MAX, "0x0"}};
    for (const auto& [mode, option] : modes) {
        On::Getaddrinfo().Returns({Ipv4Group()}).Returns({Ipv6Group()});
        EXPECT_EQ(Join(*socket, mode), Caught());
        EXPECT_EQ(LastEventOf("setsockopt").text, Ipv4Call(option)) << mode;
        EXPECT_EQ(Join(*socket, mode), Caught());
        EXPECT_EQ(LastEventOf("setsockopt").text, Ipv6Call(option)) << mode;
    }
}

TEST_F(XtMulticast, HintsAreADatagramsWhateverTheSocketIs) {
    for (const auto& socket : {MakeXt(STATE_CREATED, 1, 6).Take(), MakeXt(STATE_BOUND, 0, 0).Take(),
                               MakeXt(STATE_CONNECTED, 2, 17, SocketXt::FAMILY_IPV6).Take()}) {
        socket->SetSocketForMulticast("group.example", 0);
        EXPECT_EQ(LastEventOf("getaddrinfo").text,
                  "getaddrinfo(\"group.example\", null, {0, 0, 2, 0})");
        socket->Release();
    }
}

TEST_F(XtMulticast, SocketStaysAsItIs) {
    const auto socket = MakeAddressedXt();
    const XtFields before = FieldsOf(*socket);
    On::Setsockopt().Passes().Fails(10049);
    Join(*socket);
    Join(*socket, 1);
    EXPECT_EQ(FieldsOf(*socket), before);
}

TEST_F(XtMulticast, EveryCallKeepsItsListOpenWhateverComesOfIt) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo()
        .Returns({Ipv4Group()})
        .Returns({Ipv4Group(), Ipv6Group()})
        .Returns({OtherAddress(1)})
        .ReturnsEmpty()
        .Fails(11001);
    On::Setsockopt().Passes().Fails(10022).Fails(10022);
    for (int call = 0; call < 5; ++call)
        Join(*socket);
    const Lines open = Ledger();
    for (int list = 1; list <= 4; ++list)
        EXPECT_EQ(std::count(open.begin(), open.end(), "address list " + std::to_string(list)),
                  list <= 3 ? 1 : 0);
    EXPECT_EQ(CountOf("freeaddrinfo"), 0);
}

TEST_F(XtMulticast, GroupWithoutAddressesIsNoFailure) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo().ReturnsEmpty();
    EXPECT_EQ(Join(*socket), Caught());
    EXPECT_EQ(Transcript(), Lines{Resolution});
    ExpectRecords({});
}

TEST_F(XtMulticast, AddressesOfOtherFamiliesAreSkippedAndNoFailure) {
    const auto socket = MakeDatagramXt();
    for (const int family : {0, 1, 10, 22, 24, -2, 65536 + 2}) {
        ClearTranscript();
        On::Getaddrinfo().Returns({OtherAddress(family), {family, ""}});
        EXPECT_EQ(Join(*socket), Caught()) << family;
        EXPECT_EQ(Transcript(), Lines{Resolution}) << family;
    }
    ExpectRecords({});
}

bool HasNoGroups(const ListedAddress& address) {
    return address.family != Winsock::FamilyIpv4 && address.family != Winsock::FamilyIpv6;
}

constexpr int ErrorOfRefusal(std::size_t refusal) {
    return 10040 + static_cast<int>(refusal);
}

// The calls of the system up to the first that is not refused.
Lines CallsOf(const std::vector<ListedAddress>& group, std::size_t refusals) {
    Lines calls = {Resolution};
    for (const ListedAddress& address : group)
        if (!HasNoGroups(address) && calls.size() <= refusals + 1)
            calls.push_back(address.family == Winsock::FamilyIpv4 ? Ipv4Call() : Ipv6Call());
    return calls;
}

void ScriptRefusals(std::size_t refusals) {
    for (std::size_t refusal = 0; refusal < refusals; ++refusal)
        On::Setsockopt().Fails(ErrorOfRefusal(refusal));
}

std::vector<std::vector<ListedAddress>> AllGroupsOfThree() {
    const ListedAddress kinds[] = {Ipv4Group(), Ipv6Group(), OtherAddress(1)};
    std::vector<std::vector<ListedAddress>> groups;
    for (int order = 0; order < 27; ++order)
        groups.push_back({kinds[order % 3], kinds[order / 3 % 3], kinds[order / 9]});
    return groups;
}

TEST_F(XtMulticast, FirstAddressThatIsNotRefusedEndsTheCall) {
    const auto socket = MakeDatagramXt();
    for (const std::vector<ListedAddress>& group : AllGroupsOfThree()) {
        const auto skipped = std::count_if(group.begin(), group.end(), HasNoGroups);
        const std::size_t attempts = group.size() - static_cast<std::size_t>(skipped);
        for (std::size_t refusals = 0; refusals < attempts; ++refusals) {
            On::Getaddrinfo().Returns(group);
            ScriptRefusals(refusals);
            ClearTranscript();
            EXPECT_EQ(Join(*socket), Caught());
            EXPECT_EQ(SystemCalls(), CallsOf(group, refusals));
        }
    }
    ExpectRecords({});
}

TEST_F(XtMulticast, LastRefusalIsReportedWhereNoAddressIsTaken) {
    const auto socket = MakeDatagramXt();
    for (const std::vector<ListedAddress>& group : AllGroupsOfThree()) {
        const auto skipped = std::count_if(group.begin(), group.end(), HasNoGroups);
        const std::size_t attempts = group.size() - static_cast<std::size_t>(skipped);
        if (attempts == 0) continue;
        On::Getaddrinfo().Returns(group);
        ScriptRefusals(attempts);
        ClearTranscript();
        EXPECT_EQ(Join(*socket), NotJoined.With(ErrorOfRefusal(attempts - 1)));
        Lines calls = CallsOf(group, attempts);
        calls.insert(calls.end(), {"WSAGetLastError()", "LogMessage"});
        EXPECT_EQ(SystemCalls(), calls);
    }
}

TEST_F(XtMulticast, EachFailureToResolveIsReportedWithTheLastError) {
    const auto socket = MakeAddressedXt();
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
        .operation = [&] { socket->SetSocketForMulticast("239.1.2.3", 0); },
        .failure = NotResolved,
        .calls = {Resolution, "WSAGetLastError()"},
        .memory = MemoryOf(*socket),
    });
}

TEST_F(XtMulticast, EachRefusalIsReportedWithoutAddresses) {
    const auto socket = MakeAddressedXt();
    for (const bool ipv6 : {false, true}) {
        for (const int mode : {0, 1, 7, -1}) {
            SCOPED_TRACE(mode);
            const char* const option = mode == 0 ? "0xC" : mode == 1 ? "0xD" : "0x0";
            ExpectEachXtFailure({
                .failWith =
                    [&](int number) {
                        On::Getaddrinfo().Returns({ipv6 ? Ipv6Group() : Ipv4Group()});
                        On::Setsockopt().Fails(number);
                    },
                .operation = [&] { socket->SetSocketForMulticast("239.1.2.3", mode); },
                .failure = mode == 0 ? NotJoined : NotLeft,
                .calls = {Resolution, ipv6 ? Ipv6Call(option) : Ipv4Call(option),
                          "WSAGetLastError()"},
                .memory = MemoryOf(*socket),
            });
        }
    }
}

TEST_F(XtMulticast, FailureTextsAreToldWhole) {
    const auto socket = MakeDatagramXt();
    On::Setsockopt().Fails(10049).Fails(10049).Fails(10042);
    EXPECT_EQ(Join(*socket, 0).text,
              u"VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , "
              u"::setsockopt(IP_ADD_MEMBERSHIP) ,  , errno = \u2741 Cannot assign requested "
              u"address");
    EXPECT_EQ(Join(*socket, 1).text,
              u"VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , "
              u"::setsockopt(IP_DROP_MEMBERSHIP) ,  , errno = \u2741 Cannot assign requested "
              u"address");
    EXPECT_EQ(Join(*socket, 7).text,
              u"VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , "
              u"::setsockopt(IP_DROP_MEMBERSHIP) ,  , errno = \u273A Bad protocol option");
    On::Getaddrinfo().Fails(11001);
    EXPECT_EQ(Join(*socket).text,
              u"VelNet::SocketXtImpl::SetSocketForMulticast , cannot set option for multicast , "
              u"::getaddrinfo ,  , errno = \u2AF9 host not found");
}

TEST_F(XtMulticast, RefusalIsReportedThoughASkippedAddressFollows) {
    const auto socket = MakeDatagramXt();
    On::Getaddrinfo().Returns({Ipv4Group(), OtherAddress(1), OtherAddress(99)});
    On::Setsockopt().Fails(10065);
    EXPECT_EQ(Join(*socket), NotJoined.With(10065));
}

TEST_F(XtMulticast, MissingTextIsPassedOn) {
    const auto socket = MakeDatagramXt();
    const char* const none = nullptr;
    On::Getaddrinfo().Fails(11001);
    EXPECT_EQ(Catch([&] { socket->SetSocketForMulticast(none, 0); }), NotResolved.With(11001));
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(null, null, {0, 0, 2, 0})");
}

TEST_F(XtMulticast, ClosedSocketGoesToTheSystem) {
    const auto socket = MakeClosedXt();
    On::Setsockopt().Fails(10038);
    EXPECT_EQ(Join(*socket), NotJoined.With(10038));
    EXPECT_EQ(LastEventOf("setsockopt").numbers[0], -1);
}

TEST_F(XtMulticast, SuccessNeedsNoMemory) {
    const auto socket = MakeDatagramXt();
    const Allocations::Mark mark;
    socket->SetSocketForMulticast("239.1.2.3", 0);
    EXPECT_EQ(mark.Requests(), 0U);
}

}  // namespace
}  // namespace SocketTests
