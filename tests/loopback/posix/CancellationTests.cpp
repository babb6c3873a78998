// Threads that are cancelled while they ask for settings.
#include <loopback/LoopbackTest.h>
#include <loopback/Machine.h>
#include <pthread.h>

#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketXt.h>

#include <functional>
#include <string>

namespace Loopback {
namespace {

using VelNet::SocketAddress;
using VelNet::SocketXt;

constexpr const char* Server = "SOFTWARE\\Corvane\\Orrin Server";
constexpr const char* Interface =
    "System\\CurrentControlSet\\Services\\Tcpip\\Parameters\\Interfaces\\{1}";

struct CancelledQuestion {
    std::function<void()> ask;
    bool wasAnswered;

    // A thread's function. The request is there from the beginning and takes effect wherever it
    // may.
    static void* Run(void* argument) {
        auto& question = *static_cast<CancelledQuestion*>(argument);
        ::pthread_cancel(::pthread_self());
        question.ask();
        question.wasAnswered = true;
        ::pthread_testcancel();
        return nullptr;
    }
};

class CancellationOfSettings : public LoopbackTest {
protected:
    void SetUp() override {
        if (!settings_.AreWritable()) GTEST_SKIP() << "the system lets no test write its settings";
    }

    static void ExpectAnswer(std::function<void()> ask) {
        CancelledQuestion question = {.ask = std::move(ask), .wasAnswered = false};
        pthread_t thread = {};
        ASSERT_EQ(::pthread_create(&thread, nullptr, CancelledQuestion::Run, &question), 0);
        void* end = nullptr;
        ASSERT_EQ(::pthread_join(thread, &end), 0);
        EXPECT_EQ(end, PTHREAD_CANCELED);
        EXPECT_TRUE(question.wasAnswered);
    }

    Machine::Settings settings_;
};

TEST_F(CancellationOfSettings, AThreadThatIsBeingCancelledIsToldTheVersion) {
    settings_.Write(Server, "IPVersion", "6");
    ExpectAnswer([] { EXPECT_EQ(SocketXt::GetIpVersion(), SocketXt::FAMILY_IPV6); });
}

TEST_F(CancellationOfSettings, AThreadThatIsBeingCancelledIsToldTheDomain) {
    settings_.Write(Interface, "Domain", "example.org");
    ExpectAnswer([] {
        EXPECT_EQ(std::string(SocketAddress::GetLocalMachineDomain().c_str()), "example.org");
    });
}

TEST_F(CancellationOfSettings, AThreadThatIsBeingCancelledIsToldTheNameServers) {
    settings_.Write(Interface, "NameServer", "10.0.0.1 10.0.0.2");
    ExpectAnswer(
        [] { EXPECT_EQ(SocketAddress::GetLocalMachineDomainNameServer()->GetCount(), 2U); });
}

TEST_F(CancellationOfSettings, AThreadThatIsBeingCancelledIsToldWhatIsMissing) {
    settings_.MakeKey(Interface);
    ExpectAnswer([] {
        EXPECT_THROW(SocketAddress::GetLocalMachineDomainNameServer(), VelNet::Exception);
        EXPECT_NE(std::string(SocketAddress::GetLocalMachineDomain().c_str()), "");
    });
}

}  // namespace
}  // namespace Loopback
