// SocketXt::GetIpVersion.
#include <VelBase/ExceptionImpl.h>

#include <thread>
#include <type_traits>

#include "XtFixture.h"

namespace SocketTests {
namespace {

static_assert(std::is_same_v<decltype(&SocketXt::GetIpVersion), SocketXt::ADDR_FAMILY (*)()>);

constexpr char ProductPath[] = "SOFTWARE\\Corvane";
constexpr char ServerPath[] = "SOFTWARE\\Corvane\\Orrin Server";

const Lines WholeWay = {"OpenKey(3, \"SOFTWARE\\Corvane\")",
                        "OpenSubKey(1, \"Orrin Server\")",
                        "CloseKey(2)",
                        "OpenSubKey(1, \"Orrin Server\")",
                        "ReadValue(3, \"IPVersion\", null)",
                        "ReadValue(3, \"IPVersion\")",
                        "CloseKey(3)",
                        "CloseKey(1)"};

class IpVersion : public XtTest {
protected:
    void TearDown() override {
        // What was remembered goes down with the layer.
        BringLayerDown();
        XtTest::TearDown();
    }

    static void SetTo(const std::u16string& value) {
        RegistryTree().Value(ServerPath, "IPVersion", value);
    }

    static int Remembered() { return g_socketLayer->cachedIpVersion; }
};

TEST_F(IpVersion, ExactlySixIsIpv6) {
    SetTo(u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    EXPECT_EQ(Remembered(), 2);
    EXPECT_EQ(Transcript(), WholeWay);
    ExpectRecords({});
}

TEST_F(IpVersion, EveryOtherValueIsIpv4) {
    for (const char16_t* const value :
         {u"", u"4", u"06", u"6 ", u" 6", u"6\n", u"66", u"0x6", u"IPv6", u"\u0666", u"\u0106"}) {
        SetTo(value);
        g_socketLayer->cachedIpVersion = 0;
        EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
        EXPECT_EQ(Remembered(), 1);
    }
}

TEST_F(IpVersion, MissingProductIsIpv4) {
    RegistryTree().Key("SOFTWARE\\Other\\Orrin Server");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(Remembered(), 1);
    EXPECT_EQ(Transcript(), Lines{"OpenKey(3, \"SOFTWARE\\Corvane\")"});
}

TEST_F(IpVersion, MissingServerIsIpv4) {
    RegistryTree().Value(ProductPath, "IPVersion", u"6").Key("SOFTWARE\\Corvane\\Other");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(Remembered(), 1);
    EXPECT_EQ(Transcript(), (Lines{"OpenKey(3, \"SOFTWARE\\Corvane\")",
                                   "OpenSubKey(1, \"Orrin Server\")", "CloseKey(1)"}));
}

TEST_F(IpVersion, ServerOfAnotherHiveDoesNotCount) {
    RegistryTree(2).Value(ServerPath, "IPVersion", u"6");
    RegistryTree(4).Value(ServerPath, "IPVersion", u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
}

// The key goes between the question and the opening.
TEST_F(IpVersion, ServerThatIsGoneWhenItIsOpenedIsIpv4) {
    SetTo(u"6");
    On::OpenSubKey().Passes().Fails(0);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(Remembered(), 1);
    EXPECT_EQ(Transcript(),
              (Lines{"OpenKey(3, \"SOFTWARE\\Corvane\")", "OpenSubKey(1, \"Orrin Server\")",
                     "CloseKey(2)", "OpenSubKey(1, \"Orrin Server\")", "CloseKey(1)"}));
}

TEST_F(IpVersion, MissingValueIsIpv4) {
    RegistryTree().Value(ServerPath, "Other", u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(Remembered(), 1);
    const Lines calls = Transcript();
    EXPECT_EQ(Lines(calls.end() - 2, calls.end()), (Lines{"CloseKey(3)", "CloseKey(1)"}));
}

TEST_F(IpVersion, FailureOfAnyRegistryCallIsIpv4AndLeavesNoKeyOpen) {
    SetTo(u"6");
    const std::function<void()> failures[] = {
        [] { On::OpenKey().Fails(5); }, [] { On::OpenSubKey().Fails(5); },
        [] { On::OpenSubKey().Passes().Fails(5); }, [] { On::ReadValue().Fails(5); },
        [] { On::ReadValue().Passes().Fails(5); }};
    for (const auto& fail : failures) {
        g_socketLayer->cachedIpVersion = 0;
        fail();
        EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
        EXPECT_EQ(Remembered(), 1);
    }
    ExpectRecords({});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(IpVersion, AnyMessageThrownByTheRegistryIsIpv4) {
    SetTo(u"6");
    On::OpenSubKey()
        .Throws(VelBase::ExceptionImpl<VelBase::Message>(VelBase::Message()))
        .Throws(VelBase::Message())
        .Throws(Exception(Wide("text").data(), SOCKET_ERR_UNKNOWN));
    for (int time = 0; time < 3; ++time) {
        g_socketLayer->cachedIpVersion = 0;
        EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
        EXPECT_EQ(Remembered(), 1);
        EXPECT_EQ(Transcript().back().substr(0, 9), "CloseKey(");
    }
}

TEST_F(IpVersion, AnythingElseThrownPassesAndNothingIsRemembered) {
    SetTo(u"6");
    const std::function<void()> failures[] = {
        [] { On::OpenKey().Throws(7); }, [] { On::OpenSubKey().Throws(7); },
        [] { On::OpenSubKey().Passes().Throws(7); }, [] { On::ReadValue().Throws(7); },
        [] { On::ReadValue().Passes().Throws(7); }};
    for (const auto& fail : failures) {
        fail();
        EXPECT_THROW(SocketXt::GetIpVersion(), int);
        EXPECT_EQ(Remembered(), 0);
    }
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
}

TEST_F(IpVersion, ExhaustedMemoryPassesAndNothingIsRemembered) {
    SetTo(u"6");
    const std::size_t failed = FailEveryAllocation([&](std::size_t n) {
        SocketXt::ADDR_FAMILY version = SocketXt::FAMILY_UNKNOWN;
        g_socketLayer->cachedIpVersion = 0;
        const Starved starved = Starve(n, [&] { version = SocketXt::GetIpVersion(); });
        EXPECT_EQ(starved.outOfMemory, starved.happened) << n;
        EXPECT_EQ(Remembered(), starved.happened ? 0 : 2) << n;
        EXPECT_EQ(version, starved.happened ? SocketXt::FAMILY_UNKNOWN : SocketXt::FAMILY_IPV6);
        return starved.happened;
    });
    EXPECT_GE(failed, 4U);
}

TEST_F(IpVersion, IsReadOnceAndRemembered) {
    SetTo(u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    ClearTranscript();
    SetTo(u"4");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(IpVersion, Ipv4IsRememberedToo) {
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    ClearTranscript();
    SetTo(u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(IpVersion, WhatIsRememberedIsReturnedWhateverItIs) {
    for (const int value : {1, 2}) {
        g_socketLayer->cachedIpVersion = value;
        EXPECT_EQ(SocketXt::GetIpVersion(), value);
    }
    EXPECT_EQ(Transcript(), Lines{});
}

TEST_F(IpVersion, IsReadAnewOnceTheLayerHasGoneDownAndUp) {
    SetTo(u"6");
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6);
    SetTo(u"4");
    BringLayerDown();
    const SocketInitialization again;
    EXPECT_EQ(Remembered(), 0);
    EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV4);
}

TEST_F(IpVersion, ThreadsThatAskAtOnceGetOneAnswer) {
    SetTo(u"6");
    int answers[4] = {};
    {
        std::vector<std::thread> threads;
        for (int& answer : answers)
            threads.emplace_back([&answer] { answer = SocketXt::GetIpVersion(); });
        for (std::thread& thread : threads)
            thread.join();
    }
    for (const int answer : answers)
        EXPECT_EQ(answer, 2);
    EXPECT_EQ(Remembered(), 2);
}

// Sockets follow the addresses that they are given.
TEST_F(IpVersion, NoOperationAsksForIt) {
    SetTo(u"6");
    const auto socket = CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
    EXPECT_EQ(socket->GetAddressFamily(), SocketXt::FAMILY_IPV4);
    socket->Bind(SPECIAL_ANY, "0");
    socket->Connect(SPECIAL_LOOPBACK, "80");
    socket->SendTo("abc", 3, SPECIAL_LOOPBACK, "80");
    socket->GetSpecialAddress(SPECIAL_ANY, SocketXt::FAMILY_UNKNOWN);
    EXPECT_EQ(CountOf("OpenKey"), 0);
    EXPECT_EQ(Remembered(), 0);
}

}  // namespace
}  // namespace SocketTests
