// The scripted platform's calls that know every family, wait, or carry datagrams.
#include <Platform/System.h>
#include <Platform/Winsock.h>
#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include <cstring>

#include "scripted/ScriptedPlatform.h"

namespace {

using namespace Scripted;

class ScriptedPlatformNetwork : public PlatformTest {};

std::string AddressOf(const Winsock::AddressInfo& entry) {
    return {static_cast<const char*>(entry.address), entry.addressLength};
}

std::string BytesOf(const Winsock::AddressStorage& storage, int length) {
    return {reinterpret_cast<const char*>(&storage), static_cast<std::size_t>(length)};
}

TEST_F(ScriptedPlatformNetwork, NameResolvesToOneUsualAddress) {
    Winsock::AddressInfo hints{};
    hints.type = 1;
    hints.protocol = 6;
    Winsock::AddressInfo* list = nullptr;
    EXPECT_EQ(Winsock::getaddrinfo("host", "80", &hints, &list), 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->family, 2);
    EXPECT_EQ(list->type, 1);
    EXPECT_EQ(list->protocol, 6);
    EXPECT_EQ(AddressOf(*list), SocketAddressBytes("10.0.0.1", 80));
    EXPECT_EQ(list->next, nullptr);
    EXPECT_EQ(Ledger(), Lines{"address list 1"});
    Winsock::freeaddrinfo(list);
    EXPECT_EQ(Transcript(),
              (Lines{"getaddrinfo(\"host\", \"80\", {0, 0, 1, 6})", "freeaddrinfo(1)"}));
    EXPECT_EQ(LastEventOf("getaddrinfo").bytes, "host");
}

TEST_F(ScriptedPlatformNetwork, ListHoldsWhatIsScripted) {
    On::Getaddrinfo().Returns({{23, "2001:DB8::9", 81}, {2, "10.0.0.2", 82}, {1, "ab"}});
    Winsock::AddressInfo* list = nullptr;
    EXPECT_EQ(Winsock::getaddrinfo(nullptr, nullptr, nullptr, &list), 0);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->family, 23);
    EXPECT_EQ(AddressOf(*list), std::string("\x17\0\0\x51\0\0\0\0\x20\x01\x0D\xB8", 12) +
                                    std::string(11, '\0') + "\x09" + std::string(4, '\0'));
    EXPECT_EQ(AddressOf(*list->next), SocketAddressBytes("10.0.0.2", 82));
    EXPECT_EQ(list->next->next->family, 1);
    EXPECT_EQ(AddressOf(*list->next->next), "ab");
    EXPECT_EQ(list->next->next->next, nullptr);
    const Winsock::AddressInfo* const second = list->next;
    Winsock::freeaddrinfo(list);
    EXPECT_EQ(second->addressLength, 0xDDDDDDDDDDDDDDDDULL);
    EXPECT_EQ(Transcript(), (Lines{"getaddrinfo(null, null, null)", "freeaddrinfo(1)"}));
}

TEST_F(ScriptedPlatformNetwork, EmptyListIsNullAndNotOpen) {
    On::Getaddrinfo().ReturnsEmpty();
    Winsock::AddressInfo unused{};
    Winsock::AddressInfo* list = &unused;
    EXPECT_EQ(Winsock::getaddrinfo("host", nullptr, nullptr, &list), 0);
    EXPECT_EQ(list, nullptr);
    Winsock::freeaddrinfo(list);
    EXPECT_EQ(Ledger(), Lines{});
    EXPECT_EQ(LastEventOf("freeaddrinfo").text, "freeaddrinfo(null)");
}

TEST_F(ScriptedPlatformNetwork, FailedResolutionReturnsOneNumberAndMayLeaveAnother) {
    On::Getaddrinfo().Fails(11001).FailsReturning(11002, 10093);
    Winsock::AddressInfo unused{};
    Winsock::AddressInfo* list = &unused;
    EXPECT_EQ(Winsock::getaddrinfo("host", "80", nullptr, &list), 11001);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(LastError(), 11001);
    EXPECT_EQ(Winsock::getaddrinfo("host", "80", nullptr, &list), 11002);
    EXPECT_EQ(LastError(), 10093);
}

TEST_F(ScriptedPlatformNetwork, ListsGivenBackWronglyStandInTheLedger) {
    Winsock::AddressInfo* list = nullptr;
    Winsock::getaddrinfo("host", "80", nullptr, &list);
    Winsock::freeaddrinfo(list);
    Winsock::freeaddrinfo(list);
    Winsock::AddressInfo foreign{};
    Winsock::freeaddrinfo(&foreign);
    EXPECT_EQ(Ledger(), (Lines{"surplus address list 0", "surplus address list 1"}));
    ForgetInLedger("surplus address list 0");
    ForgetInLedger("surplus address list 1");
}

TEST_F(ScriptedPlatformNetwork, ListHasTheLowestNumberThatIsFree) {
    Winsock::AddressInfo* first = nullptr;
    Winsock::AddressInfo* second = nullptr;
    Winsock::getaddrinfo("host", "80", nullptr, &first);
    Winsock::getaddrinfo("host", "80", nullptr, &second);
    Winsock::freeaddrinfo(first);
    Winsock::getaddrinfo("host", "80", nullptr, &first);
    EXPECT_EQ(Ledger(), (Lines{"address list 1", "address list 2"}));
    Winsock::freeaddrinfo(second);
    Winsock::freeaddrinfo(first);
    EXPECT_EQ(TranscriptWithout({"getaddrinfo"}),
              (Lines{"freeaddrinfo(1)", "freeaddrinfo(2)", "freeaddrinfo(1)"}));
}

TEST_F(ScriptedPlatformNetwork, ListedTypeAndProtocolMayDifferFromTheHints) {
    ListedAddress entry(2, "10.0.0.1", 80);
    entry.type = 3;
    entry.protocol = 4;
    On::Getaddrinfo().Returns({entry});
    Winsock::AddressInfo hints{};
    hints.type = 1;
    Winsock::AddressInfo* list = nullptr;
    Winsock::getaddrinfo("host", "80", &hints, &list);
    EXPECT_EQ(list->type, 3);
    EXPECT_EQ(list->protocol, 4);
    Winsock::freeaddrinfo(list);
}

TEST_F(ScriptedPlatformNetwork, HintsWithMoreThanFourNumbersFailTheTest) {
    static Winsock::AddressInfo hints{};
    hints.addressLength = 16;
    EXPECT_NONFATAL_FAILURE(
        {
            Winsock::AddressInfo* list = nullptr;
            Winsock::getaddrinfo("host", "80", &hints, &list);
            Winsock::freeaddrinfo(list);
        },
        "a hint holds more than flags, family, type and protocol");
}

struct Names {
    char host[8] = "before";
    char service[8] = "before";

    int Get(const std::string& address, unsigned int hostRoom = 8) {
        return Winsock::getnameinfo(address.data(), static_cast<int>(address.size()), host,
                                    hostRoom, service, 8, 10);
    }
};

TEST_F(ScriptedPlatformNetwork, AddressesAreNamedByTheirNumbers) {
    Names names;
    EXPECT_EQ(names.Get(SocketAddressBytes("1.2.3.4", 4711)), 0);
    EXPECT_STREQ(names.host, "1.2.3.4");
    EXPECT_STREQ(names.service, "4711");
    char host[64];
    const std::string ipv6 = SocketAddressBytesIpv6("FE80::1", 5, 3);
    EXPECT_EQ(Winsock::getnameinfo(ipv6.data(), 28, host, 64, nullptr, 0, 26), 0);
    EXPECT_STREQ(host, "FE80:0:0:0:0:0:0:1%3");
    EXPECT_EQ(Transcript(), (Lines{"getnameinfo(1.2.3.4:4711, 16, 8, 8, 10)",
                                   "getnameinfo([FE80:0:0:0:0:0:0:1%3]:5, 28, 64, 0, 26)"}));
    EXPECT_EQ(LastEventOf("getnameinfo").bytes, ipv6);
}

TEST_F(ScriptedPlatformNetwork, NamesComeAsScriptedOrNotAtAll) {
    On::Getnameinfo().Returns("host", "http").Fails(11001).FailsReturning(11002, 10055);
    Names names;
    EXPECT_EQ(names.Get("ab"), 0);
    EXPECT_STREQ(names.host, "host");
    EXPECT_STREQ(names.service, "http");
    EXPECT_EQ(names.Get("ab"), 11001);
    EXPECT_EQ(LastError(), 11001);
    EXPECT_EQ(names.Get("ab"), 11002);
    EXPECT_EQ(LastError(), 10055);
    EXPECT_EQ(names.Get("ab"), 10047);
    EXPECT_EQ(names.Get(SocketAddressBytes("10.0.0.1", 1), 8), 122);
    EXPECT_EQ(LastError(), 122);
    EXPECT_STREQ(names.host, "host");
    EXPECT_EQ(Transcript()[0], "getnameinfo(0x6162, 2, 8, 8, 10)");
}

TEST_F(ScriptedPlatformNetwork, DatagramIsTakenWhole) {
    On::Sendto().Passes().Fails(10065).Returns(1);
    const std::string ipv4 = SocketAddressBytes("10.0.0.1", 80);
    const std::string ipv6 = SocketAddressBytesIpv6("::1", 81, 0, 1);
    EXPECT_EQ(Winsock::sendto(7, "abc", 3, 0, ipv4.data(), 16), 3);
    EXPECT_EQ(Winsock::sendto(7, "abc", 3, 4, ipv6.data(), 28), -1);
    EXPECT_EQ(LastError(), 10065);
    EXPECT_EQ(Winsock::sendto(7, "abc", 3, 0, nullptr, 0), 1);
    EXPECT_EQ(Transcript(), (Lines{"sendto(7, \"abc\", 3, 0, 10.0.0.1:80, 16)",
                                   "sendto(7, \"abc\", 3, 4, 0x1700005101000000" +
                                       std::string(30, '0') + "0100000000, 28)",
                                   "sendto(7, \"abc\", 3, 0, null, 0)"}));
    EXPECT_EQ(LastEventOf("sendto").bytes, "abc");
}

TEST_F(ScriptedPlatformNetwork, DatagramComesWithItsSender) {
    On::Recvfrom().Delivers("hello", "10.0.0.9", 4711).DeliversFrom("", "raw").Fails(10040);
    char buffer[8] = {};
    Winsock::AddressStorage sender{};
    int length = 128;
    EXPECT_EQ(Winsock::recvfrom(7, buffer, 8, 0, &sender, &length), 5);
    EXPECT_STREQ(buffer, "hello");
    EXPECT_EQ(BytesOf(sender, length), SocketAddressBytes("10.0.0.9", 4711));
    length = 2;
    EXPECT_EQ(Winsock::recvfrom(7, buffer, 8, 0, &sender, &length), 0);
    EXPECT_EQ(length, 3);
    EXPECT_EQ(BytesOf(sender, 3), std::string("ra\x12", 3));
    EXPECT_EQ(Winsock::recvfrom(7, buffer, 8, 0, nullptr, nullptr), -1);
    EXPECT_EQ(LastError(), 10040);
    EXPECT_EQ(Transcript(),
              (Lines{"recvfrom(7, 8, 0, 128)", "recvfrom(7, 8, 0, 2)", "recvfrom(7, 8, 0, null)"}));
    EXPECT_EQ(LastEventOf("recvfrom").pointer, buffer);
}

TEST_F(ScriptedPlatformNetwork, SenderIsLeftAloneWhereNoneIsScripted) {
    On::Recvfrom().Delivers("hi").Returns(0);
    char buffer[8] = {};
    Winsock::AddressStorage sender{.family = 99, .bytes = {}};
    int length = 128;
    EXPECT_EQ(Winsock::recvfrom(7, buffer, 8, 0, &sender, &length), 2);
    EXPECT_EQ(Winsock::recvfrom(7, buffer, 8, 0, &sender, &length), 0);
    EXPECT_STREQ(buffer, "hi");
    EXPECT_EQ(sender.family, 99);
    EXPECT_EQ(length, 128);
}

TEST_F(ScriptedPlatformNetwork, ReceivingADatagramWithoutAnAnswerFailsTheTest) {
    char buffer[1];
    EXPECT_NONFATAL_FAILURE(Winsock::recvfrom(7, buffer, 1, 0, nullptr, nullptr),
                            "recvfrom has no answer left");
}

TEST_F(ScriptedPlatformNetwork, SelectLeavesWhatIsReady) {
    On::Select().Ready({1002}, {1001}).Returns(7, {}, {1003}).Fails(10022);
    Winsock::HandleSet read{.count = 2, .handles = {1001, 1002}};
    Winsock::HandleSet write{.count = 1, .handles = {1001}};
    const Winsock::TimeValue time{.seconds = 2, .microseconds = 0};
    EXPECT_EQ(Winsock::select(1003, &read, &write, nullptr, &time), 2);
    EXPECT_EQ(read.count, 1U);
    EXPECT_EQ(read.handles[0], 1002U);
    EXPECT_EQ(write.count, 1U);
    EXPECT_EQ(Winsock::select(0, &read, &write, nullptr, nullptr), 7);
    EXPECT_EQ(read.count, 0U);
    EXPECT_EQ(write.handles[0], 1003U);
    EXPECT_EQ(Winsock::select(0, nullptr, &write, nullptr, &time), -1);
    EXPECT_EQ(LastError(), 10022);
    EXPECT_EQ(write.count, 1U);
    EXPECT_EQ(Winsock::select(0, nullptr, &write, nullptr, &time), 0);
    EXPECT_EQ(write.count, 0U);
    EXPECT_EQ(Transcript(), (Lines{"select(1003, {1001, 1002}, {1001}, null, {2, 0})",
                                   "select(0, {1002}, {1001}, null, null)",
                                   "select(0, null, {1003}, null, {2, 0})",
                                   "select(0, null, {1003}, null, {2, 0})"}));
    EXPECT_EQ(Events()[0].numbers, (std::vector<long long>{1003, 1001, 1002, 1001, 2, 0}));
}

TEST_F(ScriptedPlatformNetwork, ReadyHandleWithoutASetFailsTheTest) {
    On::Select().Ready({1001});
    EXPECT_NONFATAL_FAILURE(Winsock::select(0, nullptr, nullptr, nullptr, nullptr),
                            "select has no set for what is ready");
}

TEST_F(ScriptedPlatformNetwork, LongOptionsAreHexBytes) {
    const std::string request = AddressBytes("239.1.2.3") + AddressBytes("0.0.0.0");
    EXPECT_EQ(Winsock::setsockopt(7, 0, 12, request.data(), 8), 0);
    EXPECT_EQ(Transcript(), Lines{"setsockopt(7, 0x0, 0xC, 0xEF01020300000000, 8)"});
    EXPECT_EQ(LastEventOf("setsockopt").bytes, request);
}

TEST_F(ScriptedPlatformNetwork, VersionIsToldToARecordOfItsSize) {
    On::GetVersionExW().Passes().Returns(5).Fails(50);
    System::VersionRecord record{};
    record.size = sizeof record;
    EXPECT_TRUE(System::GetVersionExW(&record));
    EXPECT_EQ(record.majorVersion, 10U);
    EXPECT_TRUE(System::GetVersionExW(&record));
    EXPECT_EQ(record.majorVersion, 5U);
    EXPECT_FALSE(System::GetVersionExW(&record));
    EXPECT_EQ(LastError(), 50);
    EXPECT_EQ(record.majorVersion, 5U);
    record.size = 148;
    EXPECT_FALSE(System::GetVersionExW(&record));
    EXPECT_EQ(LastError(), 122);
    EXPECT_EQ(Transcript(), (Lines{"GetVersionExW(276)", "GetVersionExW(276)", "GetVersionExW(276)",
                                   "GetVersionExW(148)"}));
    EXPECT_EQ(Events()[0].bytes, std::string("\x14\x01", 2) + std::string(274, '\0'));
}

TEST_F(ScriptedPlatformNetwork, Ipv6TextsAreReadWhole) {
    EXPECT_EQ(Ipv6AddressBytes("::"), std::string(16, '\0'));
    EXPECT_EQ(Ipv6AddressBytes("FF02::1"),
              std::string("\xFF\x02", 2) + std::string(13, '\0') + "\1");
    EXPECT_EQ(Ipv6AddressBytes("1:2:3:4:5:6:7:FFFF"),
              std::string("\0\1\0\2\0\3\0\4\0\5\0\6\0\7\xFF\xFF", 16));
    EXPECT_NONFATAL_FAILURE(Ipv6AddressBytes("1:2"), "1:2 is no IPv6 address");
}

}  // namespace
