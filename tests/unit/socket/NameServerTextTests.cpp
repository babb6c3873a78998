// SocketAddress::GetLocalMachineDomainNameServer: how the text of a setting becomes addresses.
#include "NameServerFixture.h"

namespace SocketTests {
namespace {

class NameServerTexts : public NameServers {};

TEST_F(NameServerTexts, AddressesAreSplitAtWhateverIsNeitherDigitNorPoint) {
    const std::pair<std::u16string, Lines> cases[] = {
        {u"10.0.0.1", {"10.0.0.1"}},
        {u"10.0.0.1 10.0.0.2", {"10.0.0.1", "10.0.0.2"}},
        {u"10.0.0.1,10.0.0.2", {"10.0.0.1", "10.0.0.2"}},
        {u"10.0.0.1   10.0.0.2", {"10.0.0.1", "10.0.0.2"}},
        {u"10.0.0.2, 10.0.0.1", {"10.0.0.2", "10.0.0.1"}},
        {u"10.0.0.1\t\r\n10.0.0.2;10.0.0.3", {"10.0.0.1", "10.0.0.2", "10.0.0.3"}},
        {u" ,10.0.0.1, ", {"10.0.0.1"}},
        {u"10.0.0.1x10.0.0.2", {"10.0.0.1", "10.0.0.2"}},
        {u"dns10.0.0.1and10.0.0.2etc", {"10.0.0.1", "10.0.0.2"}},
        {u"10.0.0.1-10.0.0.2/10.0.0.3:10.0.0.4", {"10.0.0.1", "10.0.0.2", "10.0.0.3", "10.0.0.4"}},
        {u"10.0.0.1\x01"
         u"10.0.0.2\x7F"
         u"10.0.0.3",
         {"10.0.0.1", "10.0.0.2", "10.0.0.3"}},
        // Digits and points of other scripts, units whose low byte is a digit or a point, and a
        // pair of surrogates.
        {u"10.0.0.1\u0661"
         u"10.0.0.2\uFF11"
         u"10.0.0.3",
         {"10.0.0.1", "10.0.0.2", "10.0.0.3"}},
        {u"10.0.0.1\u0131"
         u"10.0.0.2\u012E"
         u"10.0.0.3",
         {"10.0.0.1", "10.0.0.2", "10.0.0.3"}},
        {u"10.0.0.1\u3002"
         u"10.0.0.2\U0001F631"
         u"10.0.0.3",
         {"10.0.0.1", "10.0.0.2", "10.0.0.3"}},
        {u"10.0.0.1 10.0.0.1 10.0.0.2 10.0.0.1", {"10.0.0.1", "10.0.0.1", "10.0.0.2", "10.0.0.1"}},
        {u"0.0.0.0 255.255.255.254", {"0.0.0.0", "255.255.255.254"}},
    };
    for (const auto& [value, servers] : cases) {
        AddInterface("{A}", {{"NameServer", value}});
        ClearTranscript();
        EXPECT_EQ(Ask(), servers) << testing::PrintToString(value);
        EXPECT_EQ(ConvertedTokens(), servers) << testing::PrintToString(value);
    }
    ExpectRecords({});
}

TEST_F(NameServerTexts, EachTokenIsConvertedAsItStands) {
    AddInterface("{A}", {{"NameServer", u"1 .. 0123456789. 10.0.0.256"}});
    On::InetAddr().Returns(0x01000000).Returns(0x02000000).Returns(0x03000000).Returns(0x0400000A);
    EXPECT_EQ(Ask(), (Lines{"0.0.0.1", "0.0.0.2", "0.0.0.3", "10.0.0.4"}));
    EXPECT_EQ(ConvertedTokens(), (Lines{"1", "..", "0123456789.", "10.0.0.256"}));
}

TEST_F(NameServerTexts, LongListIsTakenWhole) {
    std::u16string value;
    Lines servers;
    for (int number = 0; number < 500; ++number) {
        servers.push_back("10.0." + std::to_string(number / 256) + '.' +
                          std::to_string(number % 256));
        value += u' ' + std::u16string(servers.back().begin(), servers.back().end());
    }
    AddInterface("{A}", {{"NameServer", value}});
    EXPECT_EQ(Ask(), servers);
}

TEST_F(NameServerTexts, RejectedTokenIsTheConversionsOwnFailure) {
    const std::pair<std::u16string, std::string> cases[] = {
        {u"10.0.0.1 10.0.0.1.5 10.0.0.2", "10.0.0.1.5"},
        {u"10.0.0.1 255.255.255.255 10.0.0.2", "255.255.255.255"},
        {u"10.0.0.1 .", "."},
    };
    std::vector<Record> records;
    for (const auto& [value, rejected] : cases) {
        AddInterface("{A}", {{"NameServer", value}});
        ClearTranscript();
        const std::u16string text =
            u"VelNet::SocketAddress::ConvertDottedStringToOctets() - FAIL. The input parameter is "
            u"not an Internet Protocol dotted address: " +
            std::u16string(rejected.begin(), rejected.end());
        EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, text, -1}));
        EXPECT_EQ(ConvertedTokens(), (Lines{"10.0.0.1", rejected}));
        records.push_back(FailureRecord(text));
    }
    ExpectRecords(records);
}

TEST_F(NameServerTexts, WhatElseTheConversionThrowsPasses) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1 10.0.0.2"}});
    On::InetAddr().Passes().Throws(KeyFailure(u"from elsewhere"));
    EXPECT_THROW(Ask(), VelRegistry::KeyException);
    On::InetAddr().Throws(42);
    EXPECT_THROW(Ask(), int);
    ExpectRecords({});
}

TEST_F(NameServerTexts, OnlySeparatorsAreNoServer) {
    for (const std::u16string value : {u", ,", u" ", u"none", u"\t\n", u"\u0661\u0131\u012E"}) {
        AddInterface("{A}", {{"NameServer", value}});
        EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp()) << testing::PrintToString(value);
    }
    EXPECT_EQ(CountOf("inet_addr"), 0);
}

}  // namespace
}  // namespace SocketTests
