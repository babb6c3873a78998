// CreateSocketXt.
#include <climits>
#include <type_traits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtCreation : public XtTest {};

static_assert(std::is_base_of_v<VelSynch::ReferenceCountedImpl<int>, SocketXtImpl>);

constexpr char Function[] = "VelNet::CreateSocketXt";

VelBase::ReturnPtrI<SocketXt> Create(int type = 0, int protocol = 0) {
    return CreateSocketXt(static_cast<Socket::SOCKET_TYPE>(type),
                          static_cast<Socket::SOCKET_PROTOCOL>(protocol));
}

ListedAddress Ipv4Entry(int number) {
    return {Winsock::FamilyIpv4, "10.0.0." + std::to_string(number), 0};
}

ListedAddress Ipv6Entry(int number) {
    return {Winsock::FamilyIpv6, "2001:DB8::" + std::to_string(number), 0};
}

TEST_F(XtCreation, ResolvesThisMachineAndMakesASocketOfItsFamily) {
    const auto socket = Create();
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0101)", "ComputerName()",
                                   "CodePageFromWide(\"SCRIPTED-HOST\", 13)",
                                   "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})",
                                   "socket(2, 1, 6)", "freeaddrinfo(1)", "WSACleanup()"}));
}

TEST_F(XtCreation, EveryPairOfTypeAndProtocolIsPutToResolverAndSystem) {
    const struct {
        int type, protocol;
        const char* numbers;
    } pairs[] = {
        {0, 0, "1, 6"},     {1, 1, "2, 17"},        {1, 0, "2, 6"},       {0, 1, "1, 17"},
        {5, 7, "0, 0"},     {0, 2, "1, 0"},         {2, 0, "0, 6"},       {-1, 1, "0, 17"},
        {1, -1, "2, 0"},    {17, 6, "0, 0"},        {INT_MIN, 0, "0, 6"}, {0, INT_MAX, "1, 0"},
        {256, 256, "0, 0"}, {65536, 65537, "0, 0"},
    };
    for (const auto& pair : pairs) {
        ClearTranscript();
        const auto socket = Create(pair.type, pair.protocol);
        const std::string numbers = pair.numbers;
        EXPECT_EQ(LastEventOf("getaddrinfo").text,
                  "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, " + numbers + "})");
        EXPECT_EQ(LastEventOf("socket").text, "socket(2, " + numbers + ")");
        const XtFields fields = FieldsOf(socket);
        EXPECT_EQ(std::to_string(fields.socketType) + ", " + std::to_string(fields.protocol),
                  numbers);
    }
}

TEST_F(XtCreation, NewSocketIsCreatedWithEmptyTextsAndOneReference) {
    const auto socket = Create(1, 1);
    EXPECT_EQ(FieldsOf(socket),
              (XtFields{1001, STATE_CREATED, "", "", "", "", 2, 17, SocketXt::FAMILY_IPV4}));
    EXPECT_EQ(ImplementationOf(*socket).GetReferenceCount(), 1);
    EXPECT_TRUE(socket->IsValid());
    EXPECT_EQ(FormatterRequests(), 0);
    ExpectRecords({});
}

TEST_F(XtCreation, FamilyIsThatOfTheAddressTheSocketWasMadeFor) {
    const struct {
        ListedAddress entry;
        SocketXt::ADDR_FAMILY family;
    } cases[] = {{Ipv4Entry(1), SocketXt::FAMILY_IPV4},
                 {Ipv6Entry(1), SocketXt::FAMILY_IPV6},
                 {{1, "local"}, SocketXt::FAMILY_UNKNOWN},
                 {{0, ""}, SocketXt::FAMILY_UNKNOWN},
                 {{10, std::string(28, '\0')}, SocketXt::FAMILY_UNKNOWN},
                 {{65536 + 2, SocketAddressBytes("10.0.0.1", 0)}, SocketXt::FAMILY_UNKNOWN}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.entry.family);
        On::Getaddrinfo().Returns({expected.entry});
        const auto socket = Create();
        EXPECT_EQ(socket->GetAddressFamily(), expected.family);
        EXPECT_EQ(LastEventOf("socket").numbers[0], expected.entry.family);
    }
}

TEST_F(XtCreation, EntrysOwnTypeAndProtocolDoNotCount) {
    ListedAddress entry = Ipv4Entry(1);
    entry.type = 3;
    entry.protocol = 132;
    On::Getaddrinfo().Returns({entry});
    const auto socket = Create(1, 1);
    EXPECT_EQ(LastEventOf("socket").text, "socket(2, 2, 17)");
    EXPECT_EQ(FieldsOf(socket).socketType, 2);
    EXPECT_EQ(FieldsOf(socket).protocol, 17);
}

TEST_F(XtCreation, FirstEntryWithASocketWins) {
    SetRouterFlag(ConnectionCategory, 0);
    for (const AddressSequence& sequence : AllAddressSequences()) {
        if (!sequence.Succeeds()) continue;
        ClearTranscript();
        sequence.Script(On::Socket());
        const auto socket = Create();
        Lines calls = {"WSAStartup(0x0101)", "ComputerName()",
                       "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})"};
        for (std::size_t attempt = 0; attempt < sequence.Attempts(); ++attempt)
            calls.push_back("socket(" + std::to_string(sequence.addresses[attempt].family) +
                            ", 1, 6)");
        calls.emplace_back("freeaddrinfo(1)");
        calls.emplace_back("WSACleanup()");
        EXPECT_EQ(SystemCalls(), calls);
        EXPECT_EQ(socket->GetAddressFamily(), sequence.addresses[sequence.refusals].family == 2
                                                  ? SocketXt::FAMILY_IPV4
                                                  : SocketXt::FAMILY_IPV6);
        ExpectRecords({});
    }
}

TEST_F(XtCreation, Ipv6AddressFirstMakesAnIpv6Socket) {
    On::Getaddrinfo().Returns({Ipv6Entry(1), Ipv4Entry(2)});
    const auto socket = Create();
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV6);
    EXPECT_EQ(CountOf("socket"), 1);
}

TEST_F(XtCreation, HandleKeepsAllItsBits) {
    for (const Winsock::Handle handle : {0ULL, 0xFFFFFFFFULL, 0x123456789ABCULL, ~0ULL - 1}) {
        On::Socket().Returns(static_cast<long long>(handle));
        const auto socket = Create();
        EXPECT_EQ(socket->GetHandle(), handle);
        EXPECT_TRUE(socket->IsValid());
    }
}

TEST_F(XtCreation, NameOfTheMachineIsNarrowedToTheCodePage) {
    On::ComputerName().Returns(u"B\u00E4r\u20AC");
    const auto socket = Create();
    EXPECT_EQ(LastEventOf("getaddrinfo").bytes, "B\xE4r?");
}

TEST_F(XtCreation, EachFailureToResolveIsReportedWithTheLastError) {
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
        .operation = [] { Create(); },
        .failure = {Function, "cannot create a socket", "::getaddrinfo"},
        .calls = {"WSAStartup(0x0101)", "ComputerName()",
                  "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})", "WSAGetLastError()"},
        .callsAfterwards = {"WSACleanup()"},
    });
}

TEST_F(XtCreation, EachRefusalOfTheSystemIsReported) {
    ExpectEachXtFailure({
        .failWith = [](int number) { On::Socket().Fails(number); },
        .operation = [] { Create(); },
        .failure = {Function, "cannot create a socket", "::socket"},
        .calls = {"WSAStartup(0x0101)", "ComputerName()",
                  "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})", "socket(2, 1, 6)",
                  "WSAGetLastError()", "freeaddrinfo(1)"},
        .callsAfterwards = {"WSACleanup()"},
    });
}

TEST_F(XtCreation, LastRefusalIsTheOneReported) {
    for (const AddressSequence& sequence : AllAddressSequences()) {
        if (sequence.Succeeds()) continue;
        ClearTranscript();
        sequence.Script(On::Socket());
        const XtFailure failure{Function, "cannot create a socket", "::socket"};
        EXPECT_EQ(Catch([] { Create(); }), failure.With(sequence.LastError()));
        EXPECT_EQ(CountOf("socket"), static_cast<int>(sequence.Attempts()));
    }
}

TEST_F(XtCreation, FailureTextsHaveNoAddresses) {
    On::Getaddrinfo().Fails(11001);
    Caught caught = Catch([] { Create(); });
    EXPECT_EQ(caught.text,
              u"VelNet::CreateSocketXt , cannot create a socket , ::getaddrinfo ,  , "
              u"errno = \u2AF9 host not found");
    EXPECT_EQ(caught.code, 11001);
    On::Socket().Fails(10047);
    caught = Catch([] { Create(); });
    EXPECT_EQ(caught.text,
              u"VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , "
              u"errno = \u273F Address family not supported by protocol family");
    EXPECT_EQ(caught.code, 10047);
}

// No call has failed then; whatever number the thread has left is told.
TEST_F(XtCreation, MachineWithoutAddressesIsARefusalOfTheSystem) {
    On::Getaddrinfo().ReturnsEmpty();
    const XtFailure failure{Function, "cannot create a socket", "::socket"};
    EXPECT_EQ(Catch([] { Create(); }), failure.With(Disturbance));
    ExpectRecords({failure.RecordWith(Disturbance)});
    EXPECT_EQ(CountOf("socket"), 0);
    EXPECT_EQ(CountOf("WSAGetLastError"), 1);
    EXPECT_EQ(SystemCalls().back(), "WSACleanup()");
}

TEST_F(XtCreation, FailureIsLoggedBeforeWinsockIsCleanedUp) {
    On::Socket().Fails(10024);
    int cleanUpsBefore = -1;
    Observe("LogMessage", [&](const Event&) { cleanUpsBefore = CountOf("WSACleanup"); });
    EXPECT_TRUE(Catch([] { Create(); }).thrown);
    EXPECT_EQ(cleanUpsBefore, 0);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtCreation, IpVersionOfTheInstallationIsNotAsked) {
    const auto socket = Create();
    EXPECT_EQ(CountOf("OpenKey"), 0);
    EXPECT_EQ(g_socketLayer->cachedIpVersion, 0);
}

TEST_F(XtCreation, ExhaustedMemoryLeavesNothingOpen) {
    const std::size_t failed =
        ExhaustMemory([] {}, [] { Create(); },
                      [](const Starved& starved) {
                          EXPECT_EQ(starved.outOfMemory, starved.happened);
                          EXPECT_EQ(CountOf("WSAStartup"), 1);
                          EXPECT_EQ(CountOf("WSACleanup"), 1);
                          EXPECT_EQ(CountOf("closesocket"), CountOf("socket"));
                      });
    EXPECT_GE(failed, 3U) << "the machine's name twice, and the socket";
}

TEST_F(XtCreation, ExhaustedMemoryWhileTheFailureIsToldLeavesNothingOpen) {
    const std::size_t failed = ExhaustMemory(
        [] { On::Socket().Fails(10024); }, [] { Create(); },
        [](const Starved& starved) { EXPECT_EQ(starved.outOfMemory, starved.happened); });
    EXPECT_GE(failed, 5U);
}

TEST_F(XtCreation, LogThatThrowsLeavesNothingOpen) {
    On::Socket().Fails(10024);
    On::LogMessage().Throws(std::runtime_error("the disk is full"));
    EXPECT_ANY_THROW(Create());
    EXPECT_EQ(CountOf("freeaddrinfo"), 1);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtCreation, WorksWhileTheLayerIsDown) {
    BringLayerDown();
    ClearTranscript();
    On::Socket().Fails(10024);
    EXPECT_TRUE(Catch([] { Create(); }).thrown);
    EXPECT_EQ(FormatterRequests(), 0);
    EXPECT_EQ(CountOf("WSACleanup"), 1);
    const auto socket = Create();
    EXPECT_TRUE(socket->IsValid());
}

}  // namespace
}  // namespace SocketTests
