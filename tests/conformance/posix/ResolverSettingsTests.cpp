// The settings of the system's resolver as keys of the machine.
#include <cerrno>

#include "ResolverScene.h"

namespace Conformance {
namespace {

const std::u16string Parameters = u"System\\CurrentControlSet\\Services\\Tcpip\\Parameters";
const std::u16string Interfaces = Parameters + u"\\Interfaces";
const std::u16string Resolver = ResolverPath;

using Names = std::vector<std::u16string>;
using ResolverSettingsKeys = ResolverKeys;

TEST_F(ResolverSettingsKeys, AreOneInterfaceBelowTheParameters) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\nnameserver 10.0.0.2\n");
    const Key interfaces = Open(Interfaces);
    ASSERT_NE(interfaces, nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(SubKeys(interfaces), Names{u"Resolver"});
    EXPECT_EQ(error_, 0U);
    const Key resolver = OpenBelow(interfaces, u"Resolver");
    ASSERT_NE(resolver, nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(resolver, u"Domain"), u"[example.org]");
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Read(resolver, u"NameServer"), u"[10.0.0.1 10.0.0.2]");
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(SubKeys(resolver), Names{});
    EXPECT_EQ(error_, 0U);
}

TEST_F(ResolverSettingsKeys, HaveTheOlderLayoutToo) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\n");
    const Key parameters = Open(Parameters);
    ASSERT_NE(parameters, nullptr);
    EXPECT_EQ(Read(parameters, u"Domain"), u"[example.org]");
    EXPECT_EQ(Read(parameters, u"NameServer"), u"[10.0.0.1]");
    EXPECT_EQ(SubKeys(parameters), Names{u"Interfaces"});
    EXPECT_EQ(Read(OpenBelow(parameters, u"Interfaces\\Resolver"), u"Domain"), u"[example.org]");
    EXPECT_EQ(SubKeys(OpenBelow(parameters, u"interfaces")), Names{u"Resolver"});
}

TEST_F(ResolverSettingsKeys, HaveNothingElse) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\n");
    const Key interfaces = Open(Interfaces);
    const Key resolver = Open(Resolver);
    for (const Key* key : {&interfaces, &resolver}) {
        for (const char16_t* name : {u"DhcpDomain", u"DhcpNameServer", u"", u"Domai", u"Domains"}) {
            EXPECT_FALSE(Has(*key, name));
            EXPECT_EQ(error_, 0U);
        }
        for (const char16_t* name : {u"Other", u"", u"\\", u"Resolver\\", u"Resolver\\More"}) {
            EXPECT_EQ(OpenBelow(*key, name), nullptr);
            EXPECT_EQ(error_, 0U);
        }
    }
    EXPECT_FALSE(Has(interfaces, u"Domain"));
    EXPECT_FALSE(Has(interfaces, u"NameServer"));
    for (const std::u16string& path :
         {Parameters + u"\\", Parameters + u"\\Other", Resolver + u"\\", u"\\" + Parameters,
          Parameters.substr(7), Parameters.substr(0, Parameters.size() - 1)}) {
        EXPECT_EQ(Open(path), nullptr);
        EXPECT_EQ(error_, 0U);
    }
    EXPECT_EQ(Open(u"System"), nullptr);
    EXPECT_EQ(Open(u"System\\CurrentControlSet\\Services\\Tcpip"), nullptr);
    EXPECT_EQ(Open(Resolver, 2), nullptr);
}

TEST_F(ResolverSettingsKeys, CompareNamesWithoutCase) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\n");
    const Key key = Open(u"SYSTEM\\currentcontrolset\\services\\TCPIP\\parameters\\INTERFACES");
    ASSERT_NE(key, nullptr);
    const Key resolver = OpenBelow(key, u"rESOLVER");
    ASSERT_NE(resolver, nullptr);
    EXPECT_EQ(Read(resolver, u"DOMAIN"), u"[example.org]");
    EXPECT_TRUE(Has(resolver, u"nameserver"));
}

TEST_F(ResolverSettingsKeys, HaveNoValuesWithoutSettings) {
    EXPECT_EQ(Told(), u"none none");
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(SubKeys(Open(Interfaces)), Names{u"Resolver"});
    EXPECT_EQ(Told(""), u"none none");
    EXPECT_EQ(Told("options edns0\n"), u"none none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(ResolverSettingsKeys, AreReadAnewWheneverTheyAreOpened) {
    files_.Write("domain first.example\n");
    const Key before = Open(Resolver);
    files_.Write("domain second.example\n");
    EXPECT_EQ(Read(Open(Resolver), u"Domain"), u"[second.example]");
    EXPECT_EQ(Read(before, u"Domain"), u"[first.example]");
}

TEST_F(ResolverSettingsKeys, GiveWayToTheTree) {
    files_.Write("domain example.org\nnameserver 10.0.0.1\n");
    tree_.Write("HKLM/System/CurrentControlSet/Services/Tcpip/Enum/Value", "text");
    EXPECT_EQ(Told(), u"[example.org] [10.0.0.1]");
    tree_.Write("HKLM/System/CurrentControlSet/Services/Tcpip/PARAMETERS/Value", "text");
    EXPECT_EQ(Open(Interfaces), nullptr);
    EXPECT_EQ(error_, 0U);
    EXPECT_EQ(Open(Resolver), nullptr);
    EXPECT_EQ(Read(Open(Parameters), u"Value"), u"[text]");
    EXPECT_FALSE(Has(Open(Parameters), u"Domain"));
    tree_.Write("HKLM/System/CurrentControlSet/Services/Tcpip/PARAMETERS/Interfaces/{1}/Domain",
                "tree.example");
    EXPECT_EQ(SubKeys(Open(Interfaces)), Names{u"{1}"});
}

TEST_F(ResolverSettingsKeys, DoNotHideATreeThatCannotBeRead) {
    files_.Write("domain example.org\n");
    tree_.Link("HKLM/System/CurrentControlSet/Services/Tcpip/Parameters", "Parameters");
    for (const std::u16string& path : {Parameters, Interfaces, Resolver}) {
        EXPECT_EQ(Open(path), nullptr);
        EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
    }
}

TEST_F(ResolverSettingsKeys, AreAnErrorWhereTheSettingsCannotBeRead) {
    files_.Link("settings");
    EXPECT_EQ(Open(Interfaces), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(ELOOP));
    std::filesystem::remove(files_.Settings());
    files_.Link("/proc/self/mem");
    EXPECT_EQ(Open(Parameters), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(EIO));
    std::filesystem::remove(files_.Settings());
    files_.Write(std::string(3U << 20U, '\n'));
    EXPECT_EQ(Open(Resolver), nullptr);
    EXPECT_EQ(error_, static_cast<unsigned int>(EFBIG));
}

TEST_F(ResolverSettingsKeys, TakeWhatIsNoFileForNoSettings) {
    files_.Link("/dev/null");
    EXPECT_EQ(Told(), u"none none");
    std::filesystem::remove(files_.Settings());
    files_.Link("nowhere");
    EXPECT_EQ(Told(), u"none none");
    std::filesystem::remove(files_.Settings());
    std::filesystem::create_directory(files_.Settings());
    EXPECT_EQ(Told(), u"none none");
    EXPECT_EQ(error_, 0U);
}

TEST_F(ResolverSettingsKeys, NameTheFirstDomainOfTheLastLineThatNamesAny) {
    EXPECT_EQ(Told("domain one.example\nsearch two.example three.example\n"),
              u"[two.example] none");
    EXPECT_EQ(Told("search two.example three.example\ndomain one.example rest\n"),
              u"[one.example] none");
    EXPECT_EQ(Told("search one.example\nsearch\nsearch \ndomain\t\n"), u"[one.example] none");
    EXPECT_EQ(Told("search \t  one.example\ttwo.example"), u"[one.example] none");
    EXPECT_EQ(Told("search .\n"), u"none none");
}

TEST_F(ResolverSettingsKeys, PassOverCommentsAndUnknownLines) {
    EXPECT_EQ(Told("# domain a\n;domain b\n#nameserver 10.0.0.9\n domain c\nDomain d\n"
                   "domainx e\nnameserver10.0.0.8\nnameserver\noptions ndots:2\nsortlist 10.0.0.7\n"
                   "domain f # comment\nnameserver 10.0.0.1 # comment\nnameserver 10.0.0.2;x\n"),
              u"[f] [10.0.0.1]");
    EXPECT_EQ(Told("family inet4\nnameservex 10.0.0.1\n"), u"none none");
}

TEST_F(ResolverSettingsKeys, HaveNoServerWithMoreBehindItsAddress) {
    for (const char* const tail : {"\r", "\v", "\f", ".", "x", ".5", "%lo"}) {
        EXPECT_EQ(Told("nameserver 10.0.0.1" + std::string(tail) + "\nnameserver 10.0.0.2\n"),
                  u"none [10.0.0.2]")
            << tail;
    }
}

TEST_F(ResolverSettingsKeys, NameTheIpv4ServersAmongTheFirstThree) {
    EXPECT_EQ(Told("nameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n"
                   "nameserver 10.0.0.4\n"),
              u"none [10.0.0.1 10.0.0.2 10.0.0.3]");
    EXPECT_EQ(Told("nameserver ::1\nnameserver 10.0.0.2\nnameserver fe80::1%eth0\n"
                   "nameserver 10.0.0.4\n"),
              u"none [10.0.0.2]");
    EXPECT_EQ(Told("nameserver no.address\nnameserver 10.0.0.2\nnameserver 10.0.0.2\n"
                   "nameserver 1.2.3.4.5\nnameserver 10.0.0.4\nnameserver 10.0.0.5\n"),
              u"none [10.0.0.2 10.0.0.2 10.0.0.4]");
    EXPECT_EQ(Told("nameserver ::1\nnameserver ::2\nnameserver ::3\nnameserver 10.0.0.4\n"),
              u"none none");
    EXPECT_EQ(Told("nameserver 10.1\nnameserver 0x7f.1\nnameserver 010.0.0.1\n"),
              u"none [10.0.0.1 127.0.0.1 8.0.0.1]");
}

TEST_F(ResolverSettingsKeys, LookBehindTheServerOfTheMachineItself) {
    const std::string local = "domain near.example\nnameserver 127.0.0.53\n";
    EXPECT_EQ(Told(local), u"[near.example] [127.0.0.53]");
    files_.WriteLocalServers("search far.example\nnameserver 10.0.0.1\nnameserver 10.0.0.2\n");
    EXPECT_EQ(Told(), u"[far.example] [10.0.0.1 10.0.0.2]");
    EXPECT_EQ(Told(local + "nameserver 10.0.0.3\n"), u"[near.example] [127.0.0.53 10.0.0.3]");
    EXPECT_EQ(Told("nameserver ::1\n" + local), u"[near.example] [127.0.0.53]");
    EXPECT_EQ(Told("nameserver 127.0.0.1\n"), u"none [127.0.0.1]");
    files_.WriteLocalServers("");
    EXPECT_EQ(Told(local), u"none none");
}

}  // namespace
}  // namespace Conformance
