// CreateSocketXt for an IP version that the caller chooses.
#include <climits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

class XtFamily : public XtTest {};

struct Version {
    SocketXt::ADDR_FAMILY family;
    const char* number;  // the system's
};

constexpr Version Versions[] = {{SocketXt::FAMILY_IPV4, "2"}, {SocketXt::FAMILY_IPV6, "23"}};

VelBase::ReturnPtrI<SocketXt> Create(SocketXt::ADDR_FAMILY family, int type = 0, int protocol = 0) {
    return CreateSocketXt(static_cast<Socket::SOCKET_TYPE>(type),
                          static_cast<Socket::SOCKET_PROTOCOL>(protocol), family);
}

std::string SocketCall(const char* family, const std::string& numbers = "1, 6") {
    return "socket(" + std::string(family) + ", " + numbers + ")";
}

const XtFailure Refused{"VelNet::CreateSocketXt", "cannot create a socket", "::socket"};

TEST_F(XtFamily, NoNameIsLookedUp) {
    for (const Version& version : Versions) {
        ClearTranscript();
        const auto socket = Create(version.family);
        EXPECT_EQ(Transcript(),
                  (Lines{"WSAStartup(0x0101)", SocketCall(version.number), "WSACleanup()"}));
        EXPECT_EQ(socket->GetAddressFamily(), version.family);
    }
}

TEST_F(XtFamily, EveryPairOfTypeAndProtocolIsPutToTheSystem) {
    const struct {
        int type, protocol;
        const char* numbers;
    } pairs[] = {
        {0, 0, "1, 6"},  {1, 1, "2, 17"}, {1, 0, "2, 6"},       {0, 1, "1, 17"},
        {5, 7, "0, 0"},  {0, 2, "1, 0"},  {2, 0, "0, 6"},       {-1, 1, "0, 17"},
        {1, -1, "2, 0"}, {17, 6, "0, 0"}, {INT_MIN, 0, "0, 6"}, {0, INT_MAX, "1, 0"},
    };
    for (const Version& version : Versions) {
        for (const auto& pair : pairs) {
            const auto socket = Create(version.family, pair.type, pair.protocol);
            EXPECT_EQ(LastEventOf("socket").text, SocketCall(version.number, pair.numbers));
            const XtFields fields = FieldsOf(socket);
            EXPECT_EQ(std::to_string(fields.socketType) + ", " + std::to_string(fields.protocol),
                      pair.numbers);
        }
    }
}

TEST_F(XtFamily, NewSocketIsTheSameAsThatOfTheOwnNamesVersion) {
    SetRouterFlag(ConnectionCategory, 0);
    for (const Version& version : Versions) {
        const auto socket = Create(version.family, 1, 1);
        const Winsock::Handle handle = socket->GetHandle();
        EXPECT_EQ(FieldsOf(socket),
                  (XtFields{handle, STATE_CREATED, "", "", "", "", 2, 17, version.family}));
        EXPECT_EQ(ImplementationOf(*socket).GetReferenceCount(), 1);
        EXPECT_TRUE(socket->IsValid());
    }
    EXPECT_EQ(FormatterRequests(), 0);
    ExpectRecords({});
}

TEST_F(XtFamily, UnknownIsTheOwnNamesVersion) {
    On::Getaddrinfo().Returns({{Winsock::FamilyIpv6, "2001:DB8::1", 0}});
    const auto socket = Create(SocketXt::FAMILY_UNKNOWN);
    EXPECT_EQ(Transcript(), (Lines{"WSAStartup(0x0101)", "ComputerName()",
                                   "CodePageFromWide(\"SCRIPTED-HOST\", 13)",
                                   "getaddrinfo(\"SCRIPTED-HOST\", null, {0, 0, 1, 6})",
                                   "socket(23, 1, 6)", "freeaddrinfo(1)", "WSACleanup()"}));
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV6);
}

// What the system refuses for certain is passed on, and not what might stand for "any".
TEST_F(XtFamily, VersionWithoutANameIsLeftToTheSystemToRefuse) {
    for (const int unnamed : {3, -1, 23, INT_MIN, INT_MAX}) {
        ClearTranscript();
        On::Socket().Fails(10047);
        EXPECT_EQ(Catch([&] { Create(static_cast<SocketXt::ADDR_FAMILY>(unnamed)); }),
                  Refused.With(10047));
        EXPECT_EQ(LastEventOf("socket").text, SocketCall("-1"));
        EXPECT_EQ(CountOf("getaddrinfo"), 0);
    }
}

TEST_F(XtFamily, HandleKeepsAllItsBits) {
    for (const Winsock::Handle handle : {0ULL, 0xFFFFFFFFULL, 0x123456789ABCULL, ~0ULL - 1}) {
        On::Socket().Returns(static_cast<long long>(handle));
        EXPECT_EQ(Create(SocketXt::FAMILY_IPV6)->GetHandle(), handle);
    }
}

TEST_F(XtFamily, EachRefusalOfTheSystemIsReported) {
    for (const Version& version : Versions) {
        ExpectEachXtFailure({
            .failWith = [](int number) { On::Socket().Fails(number); },
            .operation = [&] { Create(version.family); },
            .failure = Refused,
            .calls = {"WSAStartup(0x0101)", SocketCall(version.number), "WSAGetLastError()"},
            .callsAfterwards = {"WSACleanup()"},
        });
    }
}

TEST_F(XtFamily, FailureTextIsThatOfTheTwoArguments) {
    On::Socket().Fails(10047).Fails(10047);
    const Caught chosen = Catch([] { Create(SocketXt::FAMILY_IPV6); });
    EXPECT_EQ(chosen.text,
              u"VelNet::CreateSocketXt , cannot create a socket , ::socket ,  , "
              u"errno = \u273F Address family not supported by protocol family");
    EXPECT_EQ(chosen.code, 10047);
    EXPECT_EQ(Catch([] { Create(SocketXt::FAMILY_UNKNOWN); }), chosen);
}

TEST_F(XtFamily, IpVersionOfTheInstallationIsNotAsked) {
    const auto socket = Create(SocketXt::FAMILY_IPV4);
    EXPECT_EQ(CountOf("OpenKey"), 0);
    EXPECT_EQ(g_socketLayer->cachedIpVersion, 0);
}

TEST_F(XtFamily, ExhaustedMemoryLeavesNothingOpen) {
    const std::size_t failed =
        ExhaustMemory([] {}, [] { Create(SocketXt::FAMILY_IPV4); },
                      [](const Starved& starved) {
                          EXPECT_EQ(starved.outOfMemory, starved.happened);
                          EXPECT_EQ(CountOf("WSAStartup"), 1);
                          EXPECT_EQ(CountOf("WSACleanup"), 1);
                          EXPECT_EQ(CountOf("closesocket"), CountOf("socket"));
                      });
    EXPECT_EQ(failed, 1U) << "the object";
}

TEST_F(XtFamily, LogThatThrowsLeavesNothingOpen) {
    On::Socket().Fails(10024);
    On::LogMessage().Throws(std::runtime_error("the disk is full"));
    EXPECT_ANY_THROW(Create(SocketXt::FAMILY_IPV6));
    EXPECT_EQ(CountOf("WSACleanup"), 1);
}

TEST_F(XtFamily, WorksWhileTheLayerIsDown) {
    BringLayerDown();
    EXPECT_TRUE(Create(SocketXt::FAMILY_IPV6)->IsValid());
    EXPECT_EQ(FormatterRequests(), 0);
}

}  // namespace
}  // namespace SocketTests
