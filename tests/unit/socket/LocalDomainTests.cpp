// SocketAddress::GetLocalMachineDomain.
#include <Platform/System.h>

#include <climits>

#include "TcpipSettingsFixture.h"

namespace SocketTests {
namespace {

class LocalDomain : public TcpipSettingsTest {
protected:
    static std::string Ask() { return SocketAddress::GetLocalMachineDomain().c_str(); }

    static SettingsReader Reader() {
        return {.operation = [] { SocketAddress::GetLocalMachineDomain(); },
                .label = u"VelNet::SocketAddress::GetLocalMachineDomain() - FAIL."};
    }
    static SettingsReader OlderReader() {
        SettingsReader reader = Reader();
        reader.isOlderLayout = true;
        return reader;
    }
};

TEST_F(LocalDomain, NewerLayoutIsReadFromTheInterfacesKey) {
    AddInterface("{A}");
    AddInterface("{B}", {{"Domain", u"b.example"}, {"NameServer", u"10.0.0.1"}});
    EXPECT_EQ(Ask(), "b.example");
    EXPECT_EQ(
        Transcript(),
        (Lines{"GetVersionExW(276)", std::string("OpenKey(3, \"") + InterfacesPath + "\")",
               "SubKeyNames(1)", "OpenSubKey(1, \"{A}\")", "ReadValue(2, \"DhcpDomain\", null)",
               "ReadValue(2, \"Domain\", null)", "CloseKey(2)", "OpenSubKey(1, \"{B}\")",
               "ReadValue(3, \"DhcpDomain\", null)", "ReadValue(3, \"Domain\", null)",
               "ReadValue(3, \"Domain\")", "CloseKey(3)", "CloseKey(1)"}));
}

TEST_F(LocalDomain, OlderLayoutIsReadFromTheParametersKey) {
    AddParameters({{"DhcpDomain", u"dhcp.example"}, {"NameServer", u"10.0.0.1"}});
    AddInterface("{A}", {{"DhcpDomain", u"newer.example"}});
    ReadOlderLayout();
    EXPECT_EQ(Ask(), "dhcp.example");
    EXPECT_EQ(Transcript(),
              (Lines{"GetVersionExW(276)", std::string("OpenKey(3, \"") + ParametersPath + "\")",
                     "ReadValue(1, \"Domain\", null)", "ReadValue(1, \"DhcpDomain\", null)",
                     "ReadValue(1, \"DhcpDomain\")", "CloseKey(1)"}));
}

TEST_F(LocalDomain, VersionIsAskedForWithAZeroedRecordOfItsSize) {
    Ask();
    ASSERT_EQ(CountOf("GetVersionExW"), 1);
    std::string record(276, '\0');
    record[0] = 276 % 256;
    record[1] = 276 / 256;
    EXPECT_EQ(LastEventOf("GetVersionExW").bytes, record);
}

TEST_F(LocalDomain, LayoutIsChosenByTheMajorVersion) {
    AddParameters({{"Domain", u"older"}});
    AddInterface("{A}", {{"Domain", u"newer"}});
    const std::pair<long long, const char*> cases[] = {
        {0, "older"}, {3, "older"},  {4, "older"},   {5, "newer"},
        {6, "newer"}, {10, "newer"}, {100, "newer"}, {UINT_MAX, "newer"}};
    for (const auto& [major, domain] : cases) {
        On::GetVersionExW().Returns(major);
        EXPECT_EQ(Ask(), domain) << major;
    }
}

TEST_F(LocalDomain, UnknownVersionMeansTheNewerLayout) {
    AddParameters({{"Domain", u"older"}});
    AddInterface("{A}", {{"Domain", u"newer"}});
    On::GetVersionExW().Fails(122);
    EXPECT_EQ(Ask(), "newer");
}

TEST_F(LocalDomain, WhatAFailedVersionQueryLeavesInTheRecordDoesNotCount) {
    AddParameters({{"Domain", u"older"}});
    AddInterface("{A}", {{"Domain", u"newer"}});
    Observe("GetVersionExW", [](const Event& event) {
        auto* const record = static_cast<System::VersionRecord*>(const_cast<void*>(event.pointer));
        record->majorVersion = 4;
    });
    On::GetVersionExW().Fails(5);
    EXPECT_EQ(Ask(), "newer");
}

TEST_F(LocalDomain, InterfacesAreWalkedFromTheFirst) {
    AddInterface("{C}");
    AddInterface("{A}", {{"Domain", u"a.example"}});
    AddInterface("{B}", {{"DhcpDomain", u"b.example"}});
    EXPECT_EQ(Ask(), "a.example");
    EXPECT_EQ(OpenedInterfaces(), (Lines{"{C}", "{A}"}));
}

TEST_F(LocalDomain, LastInterfaceIsReachedToo) {
    AddInterface("{A}");
    AddInterface("{B}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{C}", {{"DhcpDomain", u"c.example"}});
    EXPECT_EQ(Ask(), "c.example");
}

TEST_F(LocalDomain, WithinAnInterfaceDhcpWins) {
    AddInterface("{A}", {{"Domain", u"set.example"}, {"DhcpDomain", u"dhcp.example"}});
    EXPECT_EQ(Ask(), "dhcp.example");
    EXPECT_EQ(EventsOf("ReadValue").size(), 2U);
}

// Required: the walk stops at what is there, empty or not.
TEST_F(LocalDomain, EmptyDhcpDomainEndsTheWalk) {
    AddInterface("{A}", {{"DhcpDomain", u""}, {"Domain", u"set.example"}});
    AddInterface("{B}", {{"Domain", u"b.example"}});
    EXPECT_EQ(Ask(), "scripted-host");
    EXPECT_EQ(OpenedInterfaces(), Lines{"{A}"});
    for (const Event& event : EventsOf("ReadValue"))
        EXPECT_EQ(event.text.find("\"Domain\""), std::string::npos) << event.text;
}

TEST_F(LocalDomain, EmptyDomainEndsTheWalk) {
    AddInterface("{A}", {{"Domain", u""}});
    AddInterface("{B}", {{"DhcpDomain", u"b.example"}});
    EXPECT_EQ(Ask(), "scripted-host");
    EXPECT_EQ(OpenedInterfaces(), Lines{"{A}"});
}

struct Precedence {
    Values values;
    const char* domain;
};

void PrintTo(const Precedence& precedence, std::ostream* stream) {
    *stream << testing::PrintToString(precedence.values) << " give " << precedence.domain;
}

class LocalDomainOlder : public LocalDomain, public testing::WithParamInterface<Precedence> {};
class LocalDomainNewer : public LocalDomain, public testing::WithParamInterface<Precedence> {};

TEST_P(LocalDomainOlder, IsChosenAmongTheParameters) {
    AddParameters(GetParam().values);
    ReadOlderLayout();
    EXPECT_EQ(Ask(), GetParam().domain);
}

INSTANTIATE_TEST_SUITE_P(
    Precedences, LocalDomainOlder,
    testing::Values(Precedence{{{"Domain", u"set"}, {"DhcpDomain", u"dhcp"}}, "set"},
                    Precedence{{{"Domain", u"set"}, {"DhcpDomain", u""}}, "set"},
                    Precedence{{{"Domain", u"set"}}, "set"},
                    Precedence{{{"Domain", u""}, {"DhcpDomain", u"dhcp"}}, "dhcp"},
                    Precedence{{{"DhcpDomain", u"dhcp"}}, "dhcp"},
                    Precedence{{{"Domain", u""}, {"DhcpDomain", u""}}, "scripted-host"},
                    Precedence{{{"Domain", u""}}, "scripted-host"},
                    Precedence{{{"DhcpDomain", u""}}, "scripted-host"},
                    Precedence{{}, "scripted-host"}));

TEST_P(LocalDomainNewer, IsChosenWithinAnInterfaceOrGoesOn) {
    AddInterface("{A}", GetParam().values);
    AddInterface("{B}", {{"Domain", u"later"}, {"DhcpDomain", u"later"}});
    EXPECT_EQ(Ask(), GetParam().domain);
}

INSTANTIATE_TEST_SUITE_P(
    Precedences, LocalDomainNewer,
    testing::Values(Precedence{{{"Domain", u"set"}, {"DhcpDomain", u"dhcp"}}, "dhcp"},
                    Precedence{{{"Domain", u""}, {"DhcpDomain", u"dhcp"}}, "dhcp"},
                    Precedence{{{"DhcpDomain", u"dhcp"}}, "dhcp"},
                    Precedence{{{"Domain", u"set"}}, "set"},
                    Precedence{{{"Domain", u"set"}, {"DhcpDomain", u""}}, "scripted-host"},
                    Precedence{{{"Domain", u""}, {"DhcpDomain", u""}}, "scripted-host"},
                    Precedence{{{"Domain", u""}}, "scripted-host"},
                    Precedence{{{"DhcpDomain", u""}}, "scripted-host"},
                    Precedence{{{"NameServer", u"10.0.0.1"}}, "later"}, Precedence{{}, "later"}));

TEST_F(LocalDomain, OlderLayoutReadsDhcpOnlyWhileNothingWasRead) {
    AddParameters({{"Domain", u"set.example"}, {"DhcpDomain", u"dhcp.example"}});
    ReadOlderLayout();
    Ask();
    EXPECT_EQ(TranscriptWithout({"GetVersionExW", "OpenKey", "CloseKey"}),
              (Lines{"ReadValue(1, \"Domain\", null)", "ReadValue(1, \"Domain\")"}));
}

TEST_F(LocalDomain, WithoutAnyTheHostNameIsReturned) {
    AddInterface("{A}");
    On::Gethostname().Returns("workstation");
    EXPECT_EQ(Ask(), "workstation");
    EXPECT_EQ(Transcript().back(), "gethostname(200)");
    EXPECT_EQ(CountOf("gethostname"), 1);
}

TEST_F(LocalDomain, WithADomainTheHostNameIsNotAskedFor) {
    AddInterface("{A}", {{"Domain", u"a.example"}});
    EXPECT_EQ(Ask(), "a.example");
    EXPECT_EQ(CountOf("gethostname"), 0);
}

TEST_F(LocalDomain, KeyWithoutInterfacesGivesTheHostName) {
    RegistryTree().Key(InterfacesPath);
    EXPECT_EQ(Ask(), "scripted-host");
    ExpectRecords({});
}

TEST_F(LocalDomain, MissingKeyGivesTheHostName) {
    EXPECT_EQ(Ask(), "scripted-host");
    ReadOlderLayout();
    EXPECT_EQ(Ask(), "scripted-host");
    ExpectRecords({});
}

TEST_F(LocalDomain, InterfaceThatIsGoneMeanwhileIsSkipped) {
    AddInterface("{A}", {{"Domain", u"a.example"}});
    AddInterface("{B}", {{"Domain", u"b.example"}});
    On::OpenSubKey().Fails(0);
    EXPECT_EQ(Ask(), "b.example");
}

TEST_F(LocalDomain, EachFailureToAskForTheHostNamePasses) {
    mayAskForSocketErrors_ = true;
    ExpectEachFailure({
        .failWith = [](int number) { On::Gethostname().Fails(number); },
        .operation = [] { Ask(); },
        .text = "VelNet::SocketAddress::GetLocalMachineName() - FAIL. The host name is not "
                "configured on this machine.",
        .calls = {"GetVersionExW(276)", std::string("OpenKey(3, \"") + InterfacesPath + "\")",
                  "gethostname(200)", "WSAGetLastError()"},
    });
}

TEST_F(LocalDomain, IsReturnedAsUtf8) {
    AddInterface("{A}", {{"Domain", u"b\u00FCro.\u20AC.\U0001F600.example"}});
    EXPECT_EQ(Ask(), "b\xC3\xBCro.\xE2\x82\xAC.\xF0\x9F\x98\x80.example");
    AddParameters({{"Domain", u"\u00FC"}});
    ReadOlderLayout();
    EXPECT_EQ(Ask(), "\xC3\xBC");
}

TEST_F(LocalDomain, IsReturnedAsItStands) {
    const std::u16string longDomain(5000, u'd');
    for (const std::u16string& text :
         {std::u16string(u" "), std::u16string(u"."), std::u16string(u"a b,c"), longDomain}) {
        AddInterface("{A}", {{"Domain", text}});
        EXPECT_EQ(Ask(), std::string(text.begin(), text.end()));
    }
}

TEST_F(LocalDomain, DoesNotStartTheLayer) {
    AddInterface("{A}", {{"Domain", u"a.example"}});
    BringLayerDown();
    EXPECT_EQ(Ask(), "a.example");
    On::OpenKey().Throws(KeyFailure(u"reason"));
    EXPECT_EQ(Catch([] { Ask(); }).text, SettingsFailure(Reader(), u"reason"));
    ExpectRecords({});
    EXPECT_EQ(CountOf("WSAStartup"), 0);
}

TEST_F(LocalDomain, EachCallReadsAnew) {
    AddInterface("{A}", {{"Domain", u"first.example"}});
    EXPECT_EQ(Ask(), "first.example");
    const std::size_t calls = Transcript().size();
    AddInterface("{A}", {{"Domain", u"second.example"}});
    EXPECT_EQ(Ask(), "second.example");
    EXPECT_EQ(Transcript().size(), 2 * calls);
    AddInterface("{A}", {{"DhcpDomain", u"third.example"}});
    EXPECT_EQ(Ask(), "third.example");
}

TEST_F(LocalDomain, EachKeyExceptionIsToldInTheNewerLayout) {
    AddInterface("{A}");
    AddInterface("{B}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{C}", {{"Domain", u"c.example"}});
    EXPECT_EQ(ExpectEachKeyExceptionIsTold(Reader()), 12U);
}

TEST_F(LocalDomain, EachKeyExceptionIsToldInTheOlderLayout) {
    AddParameters({{"Domain", u""}, {"DhcpDomain", u"dhcp.example"}});
    EXPECT_EQ(ExpectEachKeyExceptionIsTold(OlderReader()), 5U);
}

TEST_F(LocalDomain, WhatElseIsThrownPassesInTheNewerLayout) {
    AddInterface("{A}");
    AddInterface("{B}", {{"DhcpDomain", u"b.example"}});
    EXPECT_EQ(ExpectWhatElseIsThrownPasses(Reader()), 8U);
}

TEST_F(LocalDomain, WhatElseIsThrownPassesInTheOlderLayout) {
    AddParameters({{"Domain", u""}, {"DhcpDomain", u"dhcp.example"}});
    EXPECT_EQ(ExpectWhatElseIsThrownPasses(OlderReader()), 5U);
}

TEST_F(LocalDomain, UnreadableRegistryIsToldWithTheReason) {
    On::OpenKey().Fails(5);
    const std::u16string text =
        u"VelNet::SocketAddress::GetLocalMachineDomain() - FAIL. The TCP protocol is not "
        u"configured "
        u"on this machine. Registry error: Cannot open the key "
        u"System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces: Description of 5.";
    EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, text, -1}));
    EXPECT_EQ(TranscriptWithRecordsShortened().back(), "LogMessage");
    ExpectRecords({FailureRecord(text)});
}

TEST_F(LocalDomain, FailureWithALongReasonIsCutInTheExceptionAlone) {
    const std::u16string reason(5000, u'r');
    On::OpenKey().Throws(KeyFailure(reason));
    const std::u16string whole = SettingsFailure(Reader(), reason);
    EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, whole.substr(0, 2999), -1}));
    ExpectRecords({FailureRecord(whole)});
}

TEST_F(LocalDomain, FailureWithoutReasonEndsBehindTheLeadIn) {
    On::OpenKey().Throws(KeyFailure(u""));
    EXPECT_EQ(Catch([] { Ask(); }).text, SettingsFailure(Reader(), u""));
}

// Only what reads the registry is guarded.
TEST_F(LocalDomain, KeyExceptionFromElsewherePasses) {
    On::Gethostname().Throws(KeyFailure(u"from elsewhere"));
    EXPECT_THROW(Ask(), VelRegistry::KeyException);
    ExpectRecords({});
}

TEST_F(LocalDomain, ExhaustedMemoryLeavesNothing) {
    AddInterface("{A}");
    AddInterface("{B}", {{"Domain", u"a domain that needs memory.example"}});
    AddParameters({{"DhcpDomain", u"a domain that needs memory.example"}});
    EXPECT_GT(ExpectExhaustedMemoryPasses(Reader()), 10U);
    EXPECT_GT(ExpectExhaustedMemoryPasses(OlderReader()), 3U);
}

TEST_F(LocalDomain, ExhaustedMemoryLeavesNothingWhereTheHostNameStandsIn) {
    AddInterface("{A}");
    EXPECT_GT(ExpectExhaustedMemoryPasses(Reader()), 5U);
}

}  // namespace
}  // namespace SocketTests
