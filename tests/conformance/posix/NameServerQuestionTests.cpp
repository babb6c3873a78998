// The resolver has told a temporary failure for this computer's own name. Whether a server fails,
// or nobody knows the name, is found out by asking the servers again.
#include <netdb.h>

#include <cerrno>

#include "NameServer.h"
#include "conformance/NameScene.h"
#include "support/posix/SystemCallFaults.h"

namespace Conformance {
namespace {

using namespace SystemCalls;

// The resolver itself is not asked: all questions are those that come after it.
void WithOwnName(const std::string& name, const std::string& settings,
                 const std::function<void()>& scene, const std::string& hosts = "") {
    WithResolverSettings(settings, hosts, name, [&] {
        const FailingCall untold(SystemCall::Gethostbyname, TRY_AGAIN);
        scene();
    });
}

void ExpectUnknown() {
    EXPECT_NE(Winsock::gethostbyname(""), nullptr);
}
void ExpectFailure() {
    EXPECT_TRUE(FailsWith(11002, Winsock::gethostbyname("")));
}

using Names = std::vector<std::string>;
constexpr const char* SearchSettings =
    "nameserver 127.0.0.1\nsearch one.test two.test\noptions timeout:30 attempts:5\n";

TEST(NameServerQuestions, GoThroughTheDomainsUntilAServerFails) {
    WithOwnName("lonely.test", SearchSettings, [] {
        const NameServer server;
        ExpectUnknown();
        EXPECT_EQ(server.Asked(),
                  (Names{"lonely.test.", "lonely.test.one.test.", "lonely.test.two.test."}));
    });
    const std::string failing = std::string(SearchSettings) + "search one.test example two.test\n";
    WithOwnName("failing", failing, [] {
        const NameServer server;
        ExpectFailure();
        EXPECT_EQ(server.Asked(), (Names{"failing.", "failing.one.test.", "failing.example."}));
    });
}

TEST(NameServerQuestions, GoOnAfterAServerThatRefuses) {
    WithOwnName("refused.test", SearchSettings, [] {
        const NameServer server;
        ExpectUnknown();
        EXPECT_EQ(server.Asked().size(), 3U);
    });
}

// However long the resolver waits, and however often it asks.
TEST(NameServerQuestions, AreAskedOnceAndNotForLongWhereTheServerIsSilent) {
    WithOwnName("lonely.test", SearchSettings, [] {
        const NameServerPort silent;
        EXPECT_LT(TimeOf(ExpectUnknown), Milliseconds(20'000));
        EXPECT_EQ(silent.TakeQuestions(), 1);
    });
}

TEST(NameServerQuestions, AreSentAsDatagramsEvenWhereConnectionsAreAskedFor) {
    WithOwnName("failing.example", std::string(PatientSettings) + "options use-vc\n", [] {
        const NameServer server;
        ExpectFailure();
    });
}

// The resolver ought to have found it.
TEST(NameServerQuestions, ThatAreAnsweredMeanAFailure) {
    WithOwnName("four.example", PatientSettings, [] {
        const NameServer server;
        ExpectFailure();
    });
}

TEST(NameServerQuestions, ThatCannotBeAskedMeanAFailure) {
    WithOwnName("lonely.test", PatientSettings, [] {
        const NameServer server;
        {
            const FailingCall fails(SystemCall::ResNinit, ENOMEM);
            ExpectFailure();
        }
        for (const int error : {EMFILE, ENFILE, ENOMEM, ENOBUFS}) {
            const FailingCall fails(SystemCall::ResNquerydomain, error);
            ExpectFailure();
        }
        EXPECT_EQ(server.Asked(), Names{});
    });
}

// An error number that was there before says nothing of the question.
TEST(NameServerQuestions, ThatAreNotAnsweredMeanNothing) {
    WithOwnName("lonely.test", PatientSettings, [] {
        const HookedCall made(SystemCall::ResNinit, [](const Call& call) {
            const Word result = call.Make();
            errno = EMFILE;
            return result;
        });
        const HookedCall asked(SystemCall::ResNquerydomain, [](const Call&) { return Word{-1}; });
        ExpectUnknown();
        EXPECT_EQ(asked.Seen(), 1U);
    });
}

// What stands behind the comment's sign is not in the table.
TEST(NameServerQuestions, AreNotAskedForANameInTheHostsFile) {
    const auto ask = [](const std::string& hosts, void (*expect)(), unsigned int questions) {
        WithOwnName(
            "lonely.test", PatientSettings,
            [&] {
                const HookedCall asked(SystemCall::ResNquerydomain,
                                       [](const Call&) { return Word{-1}; });
                expect();
                EXPECT_EQ(asked.Seen(), questions) << hosts;
            },
            hosts);
    };
    ask("10.4.4.4 other\n10.4.4.5 one LONELY.test # two\n", ExpectFailure, 0);
    ask("10.4.4.4 other # lonely.test\n#10.4.4.4 lonely.test\n", ExpectUnknown, 1);
}

TEST(NameServerQuestions, AreAskedWhereTheHostsFileCannotBeOpened) {
    WithOwnName("lonely.test", PatientSettings, [] {
        const FailingCall fails(SystemCall::Fopen, ENOENT);
        const HookedCall asked(SystemCall::ResNquerydomain, [](const Call&) { return Word{-1}; });
        ExpectUnknown();
        EXPECT_EQ(asked.Seen(), 1U);
    });
}

// They would be answered otherwise than a name is.
TEST(NameServerQuestions, AreNotAskedForWhatStandsInBrackets) {
    WithResolverSettings("", "", "here", [] {
        List list;
        EXPECT_TRUE(Returns(11002, Resolve("no-number.example", "80", list)));
        for (const char* const host : {"[no:number]", "[::g]", "[1:2]"})
            EXPECT_TRUE(Returns(11001, Resolve(host, "80", list))) << host;
    });
}

}  // namespace
}  // namespace Conformance
