// SocketXt::GetSpecialAddress, and the operations that take a special address.
#include "XtFixture.h"
#include "scripted/platform/Call.h"

namespace SocketTests {
namespace {

class XtSpecialAddress : public XtTest {};

constexpr SocketXt::ADDR_FAMILY Ipv4 = SocketXt::FAMILY_IPV4;
constexpr SocketXt::ADDR_FAMILY Ipv6 = SocketXt::FAMILY_IPV6;

std::string TextOf(const SocketXt& socket, int kind, int family) {
    return socket
        .GetSpecialAddress(static_cast<SpecialAddressKind>(kind),
                           static_cast<SocketXt::ADDR_FAMILY>(family))
        .c_str();
}

// Speaks of special addresses in words of its own, and notes what it is asked.
class OwnTexts : public SocketXtImpl {
public:
    using SocketXtImpl::SocketXtImpl;
    VelBase::ReturnString GetSpecialAddress(SpecialAddressKind kind,
                                            ADDR_FAMILY family) const override {
        const Allocations::Uncounted uncounted;
        asked.push_back(std::to_string(kind) + " of " + std::to_string(family));
        const Scripted::Counted counted;
        return "own.example";
    }

    mutable Lines asked;
};

// Counts the calls of its operations by host.
class OwnOperations : public SocketXtImpl {
public:
    using SocketXtImpl::Bind;
    using SocketXtImpl::Connect;
    using SocketXtImpl::SendTo;
    using SocketXtImpl::SetSocketForMulticast;
    using SocketXtImpl::SocketXtImpl;
    void Bind(const char*, const char*) override { ++calls; }
    void Connect(const char*, const char*) override { ++calls; }
    void SetSocketForMulticast(const char*, int) override { ++calls; }
    int SendTo(const char*, int, const char*, const char*) override {
        ++calls;
        return -7;
    }

    int calls = 0;
};

void RunAll(SocketXt& socket, SpecialAddressKind kind) {
    socket.Bind(kind, "1");
    socket.Connect(kind, "2");
    socket.SendTo("abc", 3, kind, "3");
    socket.SetSocketForMulticast(kind, 0);
    ForgetOpenAddressLists();
}

Lines Resolutions() {
    Lines lines;
    for (const Event& event : EventsOf("getaddrinfo"))
        lines.push_back(event.text);
    return lines;
}

TEST_F(XtSpecialAddress, EachKindHasItsTextInEachFamily) {
    const char* const texts[6][2] = {{"", ""},
                                     {"0.0.0.0", "::0"},
                                     {"127.0.0.1", "::1"},
                                     {ThisMachine, ThisMachine},
                                     {"255.255.255.255", "ff02::1"},
                                     {"", ""}};
    const auto socket = MakeXt();
    for (int kind = 0; kind <= 5; ++kind) {
        SCOPED_TRACE(kind);
        const std::string ofNone = kind == 3 ? ThisMachine : "";
        EXPECT_EQ(TextOf(*socket, kind, 0), ofNone);
        EXPECT_EQ(TextOf(*socket, kind, 1), texts[kind][0]);
        EXPECT_EQ(TextOf(*socket, kind, 2), texts[kind][1]);
        EXPECT_EQ(TextOf(*socket, kind, 3), ofNone);
        EXPECT_EQ(TextOf(*socket, kind, -1), ofNone);
        EXPECT_EQ(TextOf(*socket, kind, 23), ofNone);
    }
}

TEST_F(XtSpecialAddress, KindsWithoutANameAreEmpty) {
    const auto socket = MakeXt();
    for (const int kind : {-1, 0, 5, 6, 257, 65537})
        for (int family = 0; family <= 3; ++family)
            EXPECT_EQ(TextOf(*socket, kind, family), "") << kind << ' ' << family;
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(XtSpecialAddress, OnlyThisMachineAsksTheSystem) {
    const auto socket = MakeXt();
    for (const int kind : {1, 2, 4})
        for (int family = 0; family <= 3; ++family)
            TextOf(*socket, kind, family);
    EXPECT_EQ(Transcript(), Lines{});
    TextOf(*socket, 3, 0);
    EXPECT_EQ(Transcript(), (Lines{"ComputerName()", "CodePageFromWide(\"SCRIPTED-HOST\", 13)"}));
}

TEST_F(XtSpecialAddress, NameOfThisMachineIsNarrowedToTheCodePage) {
    const auto socket = MakeXt();
    On::ComputerName().Returns(u"B\u00E4r\u20AC");
    EXPECT_EQ(TextOf(*socket, 3, 1), "B\xE4r?");
}

TEST_F(XtSpecialAddress, FamilyAskedForCountsAndNotTheSockets) {
    EXPECT_EQ(TextOf(*MakeXt(STATE_CREATED, 1, 6, Ipv4), 2, Ipv6), "::1");
    EXPECT_EQ(TextOf(*MakeXt(STATE_CREATED, 1, 6, Ipv6), 2, Ipv4), "127.0.0.1");
}

TEST_F(XtSpecialAddress, OperationsUseTheTextOfTheSocketsFamily) {
    const struct {
        SpecialAddressKind kind;
        SocketXt::ADDR_FAMILY family;
        std::string text;
    } cases[] = {{SPECIAL_ANY, Ipv4, "0.0.0.0"},
                 {SPECIAL_ANY, Ipv6, "::0"},
                 {SPECIAL_LOOPBACK, Ipv4, "127.0.0.1"},
                 {SPECIAL_LOOPBACK, Ipv6, "::1"},
                 {SPECIAL_THIS_MACHINE, Ipv4, ThisMachine},
                 {SPECIAL_THIS_MACHINE, SocketXt::FAMILY_UNKNOWN, ThisMachine},
                 {SPECIAL_BROADCAST, Ipv4, "255.255.255.255"},
                 {SPECIAL_BROADCAST, Ipv6, "ff02::1"},
                 {SPECIAL_LOOPBACK, SocketXt::FAMILY_UNKNOWN, ""},
                 {static_cast<SpecialAddressKind>(9), Ipv4, ""}};
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.text);
        const auto socket = MakeXt(STATE_CREATED, 1, 6, expected.family);
        RunAll(*socket, expected.kind);
        const std::string host = "getaddrinfo(\"" + expected.text + "\", ";
        EXPECT_EQ(Resolutions(),
                  (Lines{host + "\"1\", {0, 0, 1, 6})", host + "\"2\", {0, 0, 1, 6})",
                         host + "\"3\", {0, 0, 1, 6})", host + "null, {0, 0, 2, 0})"}));
        EXPECT_EQ(FieldsOf(*socket).remoteHost, expected.text);
        EXPECT_EQ(FieldsOf(*socket).remotePort, "2");
    }
}

TEST_F(XtSpecialAddress, BoundSocketRemembersTheTextOfItsSpecialAddress) {
    const auto socket = MakeXt(STATE_CREATED, 1, 6, Ipv6);
    socket->Bind(SPECIAL_LOOPBACK, "4000");
    EXPECT_EQ(FieldsOf(*socket).localHost, "::1");
    EXPECT_EQ(FieldsOf(*socket).localPort, "4000");
    EXPECT_EQ(FieldsOf(*socket).state, STATE_BOUND);
}

TEST_F(XtSpecialAddress, OverriddenTextsTakeEffect) {
    for (const SocketXt::ADDR_FAMILY family : {SocketXt::FAMILY_UNKNOWN, Ipv4, Ipv6}) {
        SCOPED_TRACE(family);
        const auto socket = MakeXt<OwnTexts>(STATE_CREATED, 1, 6, family);
        RunAll(*socket, SPECIAL_BROADCAST);
        EXPECT_EQ(socket->asked, Lines(4, "4 of " + std::to_string(family)));
        EXPECT_EQ(Resolutions(), (Lines{"getaddrinfo(\"own.example\", \"1\", {0, 0, 1, 6})",
                                        "getaddrinfo(\"own.example\", \"2\", {0, 0, 1, 6})",
                                        "getaddrinfo(\"own.example\", \"3\", {0, 0, 1, 6})",
                                        "getaddrinfo(\"own.example\", null, {0, 0, 2, 0})"}));
        const Allocations::Uncounted uncounted;
        socket->asked = {};
    }
}

TEST_F(XtSpecialAddress, OverriddenOperationsByHostAreNotCalled) {
    const auto socket = MakeXt<OwnOperations>();
    RunAll(*socket, SPECIAL_LOOPBACK);
    EXPECT_EQ(socket->calls, 0);
    EXPECT_EQ(Resolutions(), (Lines{"getaddrinfo(\"127.0.0.1\", \"1\", {0, 0, 1, 6})",
                                    "getaddrinfo(\"127.0.0.1\", \"2\", {0, 0, 1, 6})",
                                    "getaddrinfo(\"127.0.0.1\", \"3\", {0, 0, 1, 6})",
                                    "getaddrinfo(\"127.0.0.1\", null, {0, 0, 2, 0})"}));
    EXPECT_EQ(CountOf("bind"), 1);
    EXPECT_EQ(CountOf("connect"), 1);
    EXPECT_EQ(CountOf("sendto"), 1);
    EXPECT_EQ(CountOf("setsockopt"), 1);
}

TEST_F(XtSpecialAddress, DatagramsCountIsReturned) {
    const auto socket = MakeDatagramXt();
    On::Sendto().Returns(2);
    EXPECT_EQ(socket->SendTo("abc", 3, SPECIAL_BROADCAST, "80"), 2);
    EXPECT_EQ(LastEventOf("sendto").text, "sendto(1001, \"abc\", 3, 0, 10.0.0.1:80, 16)");
}

TEST_F(XtSpecialAddress, ModeOfTheGroupIsPassedOn) {
    const auto socket = MakeDatagramXt(Ipv6);
    On::Getaddrinfo().Returns({{Winsock::FamilyIpv6, "FF02::1", 0}});
    socket->SetSocketForMulticast(SPECIAL_BROADCAST, 1);
    EXPECT_EQ(LastEventOf("getaddrinfo").text, "getaddrinfo(\"ff02::1\", null, {0, 0, 2, 0})");
    EXPECT_EQ(LastEventOf("setsockopt").numbers[2], 13);
    ForgetOpenAddressLists();
}

TEST_F(XtSpecialAddress, FailureNamesTheOperationAndTheText) {
    const auto socket = MakeXt();
    On::Bind().Fails(10049);
    EXPECT_EQ(Catch([&] { socket->Bind(SPECIAL_LOOPBACK, "80"); }),
              (XtFailure{"VelNet::SocketXtImpl::Bind", "cannot bind socket to local address",
                         "::bind", "127.0.0.1", "80"}
                   .With(10049)));
}

TEST_F(XtSpecialAddress, ExhaustedMemoryLeavesNothingOpen) {
    const auto socket = MakeXt();
    SetRouterFlag(ConnectionCategory, 0);
    for (const auto& operation :
         std::vector<std::function<void()>>{[&] { socket->Bind(SPECIAL_THIS_MACHINE, "80"); },
                                            [&] { socket->Connect(SPECIAL_THIS_MACHINE, "80"); }})
        EXPECT_GE(ExhaustMemory([] {}, operation,
                                [](const Starved& starved) {
                                    EXPECT_EQ(starved.outOfMemory, starved.happened);
                                }),
                  3U);
}

}  // namespace
}  // namespace SocketTests
