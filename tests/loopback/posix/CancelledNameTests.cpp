// Threads that are cancelled while they ask for names: they end as such, and nothing else does.
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddress.h>
#include <loopback/ExtendedTest.h>
#include <pthread.h>

#include <functional>

namespace Loopback {
namespace {

using VelNet::SocketAddress;

using CancelledName = LoopbackTest;

// A thread's function. The request is there from the beginning and takes effect wherever it may.
void* AskCancelled(void* ask) {
    ::pthread_cancel(::pthread_self());
    (*static_cast<const std::function<void()>*>(ask))();
    ::pthread_testcancel();
    return nullptr;
}

void ExpectEndOfThread(std::function<void()> ask) {
    pthread_t thread = {};
    ASSERT_EQ(::pthread_create(&thread, nullptr, AskCancelled, &ask), 0);
    void* end = nullptr;
    ASSERT_EQ(::pthread_join(thread, &end), 0);
    EXPECT_EQ(end, PTHREAD_CANCELED);
}

void MakeSocket() {
    VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
}

TEST_F(CancelledName, OfAHost) {
    ExpectEndOfThread([] { SocketAddress::GetOctetsFromMachineName("localhost"); });
    ExpectEndOfThread([] {
        FailureOf([] { SocketAddress::GetOctetsFromMachineName(UnresolvableHost().c_str()); });
    });
}

TEST_F(CancelledName, OfThisComputer) {
    ExpectEndOfThread([] { SocketAddress::GetLocalMachineName(); });
    ExpectEndOfThread(MakeSocket);
    const Machine::Name unknown("no..such");
    if (!unknown.IsSet()) GTEST_SKIP() << "the system lets no test change the computer's name";
    ExpectEndOfThread(MakeSocket);
    ExpectEndOfThread([] { SocketAddress::GetOctetsFromMachineName(""); });
}

TEST_F(CancelledName, OfAService) {
    const XtPtr socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    ExpectEndOfThread([&] { FailureOf([&] { socket->Bind("127.0.0.1", "No-Such-Service"); }); });
}

TEST_F(CancelledName, OfAnAddress) {
    ExpectEndOfThread(
        [] { FailureOf([] { SocketAddress::GetMachineNameFromOctets(LocalHost()); }); });
}

}  // namespace
}  // namespace Loopback
