// The extended socket: its options, broadcasts and groups.
#include <climits>

#include "ModuleTest.h"

namespace ModuleTests {
namespace {

class XtOptions : public LayerTest {};

class XtOptionGroups : public LayerTest {
protected:
    // Required: what getaddrinfo gave is not given back.
    void TearDown() override {
        EXPECT_EQ(CountOf("freeaddrinfo"), 0);
        for (const std::string& entry : Ledger())
            if (entry.starts_with("address list ")) ForgetInLedger(entry);
        LayerTest::TearDown();
    }
};

struct Setter {
    void (*set)(SocketXt&);
    const char* call;
    std::string head;
};

const std::vector<Setter>& Setters() {
    static const std::vector<Setter> setters = {
        {[](SocketXt& socket) { socket.SetReceiveTimeout(1500); },
         "setsockopt(1001, 0xFFFF, 0x1006, 1500, 4)",
         XtHead("SetReceiveTimeout", "cannot set recv timeout", "::setsockopt", "")},
        {[](SocketXt& socket) { socket.SetSendTimeout(0xFFFFFFFF); },
         "setsockopt(1001, 0xFFFF, 0x1005, -1, 4)",
         XtHead("SetSendTimeout", "cannot set send timeout", "::setsockopt", "")},
        {[](SocketXt& socket) { socket.SetReuseAddress(); }, "setsockopt(1001, 0xFFFF, 0x4, 1, 4)",
         XtHead("SetReuseAddress", "cannot set reuse address", "::setsockopt", "")},
        {[](SocketXt& socket) { socket.SetSocketForBroadcast(); },
         "setsockopt(1001, 0xFFFF, 0x20, 1, 4)",
         XtHead("SetSocketForBroadcast", "cannot set socket option for broadcast",
                "::setsockopt(SO_BROADCAST)", "")},
    };
    return setters;
}

TEST_F(XtOptions, ArePassedWithLevelNumberValueAndLength) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    for (const Setter& setter : Setters()) {
        ClearTranscript();
        setter.set(*socket);
        EXPECT_EQ(Transcript(), Lines{setter.call});
    }
}

TEST_F(XtOptions, EachFailureIsTold) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    for (const Setter& setter : Setters())
        ExpectEachFailure({.failWith = [](int number) { On::Setsockopt().Fails(number); },
                           .operation = [&] { setter.set(*socket); },
                           .head = setter.head,
                           .calls = {setter.call, "WSAGetLastError()"}});
}

TEST_F(XtOptions, NonBlockingAndWaitingBytesAreOneCallEach) {
    const SocketXtPtr socket = NewSocketXt();
    EXPECT_TRUE(socket->SetNonBlocking());
    On::Ioctlsocket().Returns(1);
    EXPECT_TRUE(socket->IsDataAvailable());
    EXPECT_FALSE(socket->IsDataAvailable());
    EXPECT_EQ(Transcript(),
              (Lines{"ioctlsocket(1001, 0x8004667E, 1)", "ioctlsocket(1001, 0x4004667F)",
                     "ioctlsocket(1001, 0x4004667F)"}));
    On::Ioctlsocket().Fails(10038).Fails(10038);
    EXPECT_FALSE(socket->SetNonBlocking());
    EXPECT_FALSE(socket->IsDataAvailable());
    EXPECT_EQ(CountOf("WSAGetLastError"), 0);
}

constexpr char Ipv4Request[] = "0xEF01020300000000, 8)";
constexpr char Ipv6Request[] =
    "0xFF020000000000000000000000000001"
    "00000000, 20)";

TEST_F(XtOptionGroups, EachModeIsAnOptionOfBothFamilies) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    struct Mode {
        int mode;
        const char* option;
    };
    for (const auto& [mode, option] :
         {Mode{0, "0xC"}, Mode{1, "0xD"}, Mode{2, "0x0"}, Mode{7, "0x0"}, Mode{-1, "0x0"}}) {
        ClearTranscript();
        On::Getaddrinfo().Returns({{23, "FF02::1", 0}, {2, "239.1.2.3", 0}});
        On::Setsockopt().Fails(10022).Passes();
        socket->SetSocketForMulticast("a group", mode);
        EXPECT_EQ(Transcript(),
                  (Lines{"getaddrinfo(\"a group\", null, {0, 0, 2, 0})",
                         std::string("setsockopt(1001, 0x29, ") + option + ", " + Ipv6Request,
                         std::string("setsockopt(1001, 0x0, ") + option + ", " + Ipv4Request}));
    }
}

TEST_F(XtOptionGroups, OtherFamiliesArePassedBy) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    On::Getaddrinfo().Returns({{99, std::string(16, 'a')}});
    socket->SetSocketForMulticast("a group", 0);
    EXPECT_EQ(Transcript().size(), 1U);
}

TEST_F(XtOptionGroups, EachFailureIsTold) {
    const SocketXtPtr socket = NewSocketXt(Socket::SOCKET_DATAGRAM);
    constexpr char resolution[] = "getaddrinfo(\"group\", null, {0, 0, 2, 0})";
    const auto head = [](const std::string& call) {
        return XtHead("SetSocketForMulticast", "cannot set option for multicast", call, "");
    };
    ExpectEachFailure({.failWith = [](int number) { On::Getaddrinfo().FailsReturning(8, number); },
                       .operation = [&] { socket->SetSocketForMulticast("group", 0); },
                       .head = head("::getaddrinfo"),
                       .calls = {resolution, "WSAGetLastError()"}});
    for (const auto& [mode, option, call] :
         {std::tuple{0, "0xC", "::setsockopt(IP_ADD_MEMBERSHIP)"},
          {1, "0xD", "::setsockopt(IP_DROP_MEMBERSHIP)"},
          {7, "0x0", "::setsockopt(IP_DROP_MEMBERSHIP)"}}) {
        const int thisMode = mode;
        ExpectEachFailure(
            {.failWith =
                 [](int number) {
                     On::Getaddrinfo().Returns({{2, "239.1.2.3", 0}});
                     On::Setsockopt().Fails(number);
                 },
             .operation = [&, thisMode] { socket->SetSocketForMulticast("group", thisMode); },
             .head = head(call),
             .calls = {resolution,
                       std::string("setsockopt(1001, 0x0, ") + option + ", " + Ipv4Request,
                       "WSAGetLastError()"}});
    }
}

}  // namespace
}  // namespace ModuleTests
