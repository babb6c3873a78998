// SocketAddress::GetLocalMachineDomainNameServer.
#include <VelSynch/ReferenceCountedImpl.h>

#include "NameServerFixture.h"

namespace SocketTests {
namespace {

TEST_F(NameServers, NewerLayoutIsReadFromTheInterfacesKeyBackwards) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1 10.0.0.2"}});
    AddInterface("{B}", {{"Domain", u"b.example"}});
    EXPECT_EQ(Ask(), (Lines{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(
        Transcript(),
        (Lines{"GetVersionExW(276)", std::string("OpenKey(3, \"") + InterfacesPath + "\")",
               "SubKeyNames(1)", "OpenSubKey(1, \"{B}\")", "ReadValue(2, \"DhcpNameServer\", null)",
               "ReadValue(2, \"NameServer\", null)", "CloseKey(2)", "OpenSubKey(1, \"{A}\")",
               "ReadValue(3, \"DhcpNameServer\", null)", "ReadValue(3, \"NameServer\", null)",
               "ReadValue(3, \"NameServer\")", "CloseKey(3)", "CloseKey(1)",
               "inet_addr(\"10.0.0.1\")", "inet_addr(\"10.0.0.2\")"}));
}

TEST_F(NameServers, OlderLayoutIsReadFromTheParametersKey) {
    AddParameters({{"DhcpNameServer", u"10.0.0.1"}, {"Domain", u"older.example"}});
    AddInterface("{A}", {{"NameServer", u"10.9.9.9"}});
    ReadOlderLayout();
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
    EXPECT_EQ(
        Transcript(),
        (Lines{"GetVersionExW(276)", std::string("OpenKey(3, \"") + ParametersPath + "\")",
               "ReadValue(1, \"NameServer\", null)", "ReadValue(1, \"DhcpNameServer\", null)",
               "ReadValue(1, \"DhcpNameServer\")", "CloseKey(1)", "inet_addr(\"10.0.0.1\")"}));
}

TEST_F(NameServers, LayoutIsChosenByTheMajorVersion) {
    AddParameters({{"NameServer", u"10.0.0.4"}});
    AddInterface("{A}", {{"NameServer", u"10.0.0.5"}});
    const std::pair<long long, const char*> cases[] = {
        {0, "10.0.0.4"}, {4, "10.0.0.4"}, {5, "10.0.0.5"}, {6, "10.0.0.5"}, {10, "10.0.0.5"}};
    for (const auto& [major, server] : cases) {
        On::GetVersionExW().Returns(major);
        EXPECT_EQ(Ask(), Lines{server}) << major;
    }
    On::GetVersionExW().Fails(122);
    EXPECT_EQ(Ask(), Lines{"10.0.0.5"});
}

TEST_F(NameServers, InterfacesAreWalkedFromTheLast) {
    AddInterface("{C}", {{"NameServer", u"10.0.0.3"}});
    AddInterface("{A}", {{"DhcpNameServer", u"10.0.0.1"}});
    AddInterface("{B}");
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
    EXPECT_EQ(OpenedInterfaces(), (Lines{"{B}", "{A}"}));
}

TEST_F(NameServers, FirstInterfaceIsReachedToo) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{B}");
    AddInterface("{C}");
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
    EXPECT_EQ(OpenedInterfaces(), (Lines{"{C}", "{B}", "{A}"}));
}

TEST_F(NameServers, EmptyValuesDoNotEndTheWalk) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1 10.0.0.2"}});
    AddInterface("{B}", {{"DhcpNameServer", u""}, {"NameServer", u""}});
    AddInterface("{C}", {{"NameServer", u""}});
    AddInterface("{D}", {{"DhcpNameServer", u""}});
    EXPECT_EQ(Ask(), (Lines{"10.0.0.1", "10.0.0.2"}));
    EXPECT_EQ(CountOf("OpenSubKey"), 4);
}

// What is read counts as something, whether it names an address or not.
TEST_F(NameServers, ValueWithoutAnAddressEndsTheWalkAllTheSame) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{B}", {{"DhcpNameServer", u" "}, {"NameServer", u"10.0.0.2"}});
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
    EXPECT_EQ(CountOf("OpenSubKey"), 1);
}

TEST_F(NameServers, OlderValueWithoutAnAddressIsKeptAllTheSame) {
    AddParameters({{"NameServer", u", ,"}, {"DhcpNameServer", u"10.0.0.1"}});
    ReadOlderLayout();
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
    EXPECT_EQ(EventsOf("ReadValue").size(), 2U);
}

TEST_F(NameServers, SecondValueIsNotReadBehindTheFirst) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}, {"DhcpNameServer", u"10.0.0.2"}});
    Ask();
    EXPECT_EQ(
        TranscriptWithout(
            {"GetVersionExW", "OpenKey", "SubKeyNames", "OpenSubKey", "CloseKey", "inet_addr"}),
        (Lines{"ReadValue(2, \"DhcpNameServer\", null)", "ReadValue(2, \"DhcpNameServer\")"}));
}

struct Precedence {
    Values values;
    Lines servers;  // none for a failure
};

void PrintTo(const Precedence& precedence, std::ostream* stream) {
    *stream << testing::PrintToString(precedence.values) << " give "
            << testing::PrintToString(precedence.servers);
}

class NameServersOlder : public NameServers, public testing::WithParamInterface<Precedence> {};
class NameServersNewer : public NameServers, public testing::WithParamInterface<Precedence> {};

TEST_P(NameServersOlder, AreChosenAmongTheParameters) {
    AddParameters(GetParam().values);
    ReadOlderLayout();
    if (GetParam().servers.empty())
        EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
    else
        EXPECT_EQ(Ask(), GetParam().servers);
}

INSTANTIATE_TEST_SUITE_P(
    Precedences, NameServersOlder,
    testing::Values(
        Precedence{{{"NameServer", u"10.0.0.1"}, {"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.1"}},
        Precedence{{{"NameServer", u"10.0.0.1"}, {"DhcpNameServer", u""}}, {"10.0.0.1"}},
        Precedence{{{"NameServer", u"10.0.0.1"}}, {"10.0.0.1"}},
        Precedence{{{"NameServer", u""}, {"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.2"}},
        Precedence{{{"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.2"}},
        Precedence{{{"NameServer", u""}, {"DhcpNameServer", u""}}, {}},
        Precedence{{{"NameServer", u""}}, {}}, Precedence{{{"DhcpNameServer", u""}}, {}},
        Precedence{{}, {}}));

TEST_P(NameServersNewer, AreChosenWithinAnInterfaceOrTheWalkGoesOn) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.8"}, {"DhcpNameServer", u"10.0.0.9"}});
    AddInterface("{B}", GetParam().values);
    EXPECT_EQ(Ask(), GetParam().servers);
}

INSTANTIATE_TEST_SUITE_P(
    Precedences, NameServersNewer,
    testing::Values(
        Precedence{{{"NameServer", u"10.0.0.1"}, {"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.2"}},
        Precedence{{{"NameServer", u""}, {"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.2"}},
        Precedence{{{"DhcpNameServer", u"10.0.0.2"}}, {"10.0.0.2"}},
        Precedence{{{"NameServer", u"10.0.0.1"}, {"DhcpNameServer", u""}}, {"10.0.0.1"}},
        Precedence{{{"NameServer", u"10.0.0.1"}}, {"10.0.0.1"}},
        Precedence{{{"NameServer", u""}, {"DhcpNameServer", u""}}, {"10.0.0.9"}},
        Precedence{{{"NameServer", u""}}, {"10.0.0.9"}},
        Precedence{{{"DhcpNameServer", u""}}, {"10.0.0.9"}},
        Precedence{{{"DhcpDomain", u"b.example"}}, {"10.0.0.9"}}, Precedence{{}, {"10.0.0.9"}}));

TEST_F(NameServers, ResultHoldsTheOnlyReference) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    const auto servers = SocketAddress::GetLocalMachineDomainNameServer();
    EXPECT_EQ(
        dynamic_cast<const VelSynch::ReferenceCountedImpl<int>&>(*servers).GetReferenceCount(), 1);
}

TEST_F(NameServers, NoServerIsToldAndLogged) {
    AddInterface("{A}", {{"NameServer", u""}, {"DhcpNameServer", u""}});
    AddInterface("{B}", {{"Domain", u"b.example"}});
    const std::u16string text =
        u"VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not "
        u"configured on this machine. Registry error: NameServer and DhcpNameServer keys are not "
        u"set up";
    EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, text, -1}));
    EXPECT_EQ(TranscriptWithRecordsShortened().back(), "LogMessage");
    EXPECT_EQ(CountOf("LogMessage"), 1);
    ExpectRecords({FailureRecord(text)});
}

TEST_F(NameServers, NoServerIsNotLoggedWhileErrorIsOff) {
    SetRouterFlag(ErrorCategory, 0);
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
    ExpectRecords({});
    EXPECT_EQ(FormatterRequests(), 0);
}

TEST_F(NameServers, KeyWithoutInterfacesHasNoServer) {
    RegistryTree().Key(InterfacesPath);
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
}

TEST_F(NameServers, MissingKeyHasNoServer) {
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
    ReadOlderLayout();
    EXPECT_EQ(Catch([] { Ask(); }), NoneIsSetUp());
}

TEST_F(NameServers, InterfaceThatIsGoneMeanwhileIsSkipped) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{B}", {{"NameServer", u"10.0.0.2"}});
    On::OpenSubKey().Fails(0);
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
}

TEST_F(NameServers, DoesNotStartTheLayer) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    BringLayerDown();
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
    On::OpenKey().Throws(KeyFailure(u"reason"));
    EXPECT_EQ(Catch([] { Ask(); }).text, SettingsFailure(Reader(), u"reason"));
    ExpectRecords({});
    EXPECT_EQ(CountOf("WSAStartup"), 0);
}

TEST_F(NameServers, EachCallReadsAnew) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    EXPECT_EQ(Ask(), Lines{"10.0.0.1"});
    const std::size_t calls = Transcript().size();
    AddInterface("{A}", {{"NameServer", u"10.0.0.2"}});
    EXPECT_EQ(Ask(), Lines{"10.0.0.2"});
    EXPECT_EQ(Transcript().size(), 2 * calls);
}

TEST_F(NameServers, EachKeyExceptionIsToldInTheNewerLayout) {
    AddInterface("{A}", {{"NameServer", u"10.0.0.1"}});
    AddInterface("{B}", {{"DhcpNameServer", u""}, {"NameServer", u""}});
    AddInterface("{C}");
    EXPECT_EQ(ExpectEachKeyExceptionIsTold(Reader()), 14U);
}

TEST_F(NameServers, EachKeyExceptionIsToldInTheOlderLayout) {
    AddParameters({{"NameServer", u""}, {"DhcpNameServer", u"10.0.0.1"}});
    EXPECT_EQ(ExpectEachKeyExceptionIsTold(OlderReader()), 5U);
}

TEST_F(NameServers, WhatElseIsThrownPassesInTheNewerLayout) {
    AddInterface("{A}", {{"DhcpNameServer", u"10.0.0.1"}});
    AddInterface("{B}", {{"NameServer", u""}});
    EXPECT_EQ(ExpectWhatElseIsThrownPasses(Reader()), 9U);
}

TEST_F(NameServers, WhatElseIsThrownPassesInTheOlderLayout) {
    AddParameters({{"NameServer", u""}, {"DhcpNameServer", u"10.0.0.1"}});
    EXPECT_EQ(ExpectWhatElseIsThrownPasses(OlderReader()), 5U);
}

TEST_F(NameServers, UnreadableRegistryIsToldWithTheReason) {
    AddParameters();
    ReadOlderLayout();
    On::ReadValue().Fails(5);
    const std::u16string text =
        u"VelNet::SocketAddress::GetLocalMachineDomainNameServer() - FAIL. The TCP protocol is not "
        u"configured on this machine. Registry error: Cannot read the value NameServer of the key "
        u"System\\CurrentControlSet\\Services\\Tcpip\\Parameters: Description of 5.";
    EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, text, -1}));
    ExpectRecords({FailureRecord(text)});
}

TEST_F(NameServers, FailureWithALongReasonIsCutInTheExceptionAlone) {
    const std::u16string reason(5000, u'r');
    On::OpenKey().Throws(KeyFailure(reason));
    const std::u16string whole = SettingsFailure(Reader(), reason);
    EXPECT_EQ(Catch([] { Ask(); }), (Caught{true, whole.substr(0, 2999), -1}));
    ExpectRecords({FailureRecord(whole)});
}

TEST_F(NameServers, ExhaustedMemoryLeavesNothing) {
    AddInterface("{A}", {{"NameServer", u"10.100.100.101 10.100.100.102"}});
    AddInterface("{B}");
    AddParameters({{"DhcpNameServer", u"10.100.100.101 10.100.100.102"}});
    EXPECT_GT(ExpectExhaustedMemoryPasses(Reader()), 15U);
    EXPECT_GT(ExpectExhaustedMemoryPasses(OlderReader()), 10U);
}

}  // namespace
}  // namespace SocketTests
