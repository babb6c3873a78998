// What needs this computer's name while the system fails to tell it, or what it stands for.
#include <VelNet/SocketAddress.h>
#include <loopback/ExtendedTest.h>
#include <loopback/posix/FaultTest.h>
#include <netdb.h>

namespace Loopback {
namespace {

using namespace SystemCalls;
using VelNet::SocketAddress;

void MakeSocket() {
    VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
}

Failure NotMade(const Fault& fault) {
    return fault.Of(u"VelNet::CreateSocketXt , cannot create a socket , ::getaddrinfo ,  ");
}

class OwnNameFault : public LoopbackTest {
protected:
    OwnNameFault() { EnableOnly({Error}); }

    void ExpectNotMade(const Fault& fault) {
        const Failure failure = NotMade(fault);
        EXPECT_EQ(FailureOf(MakeSocket), failure);
        EXPECT_EQ(Sink().Take(), (Records{{Error, failure.text}}));
    }
};

TEST_F(OwnNameFault, OfTheSystemLeavesNoAddressToTakeTheVersionFrom) {
    for (const Fault& fault : Faults) {
        const FailingCall fails(SystemCall::Gethostname, fault.system);
        ExpectNotMade(fault);
    }
}

TEST_F(OwnNameFault, OfTheSystemIsOneOfTheEmptyName) {
    for (const Fault& fault : Faults) {
        const FailingCall fails(SystemCall::Gethostname, fault.system);
        const Failure failure = FailureOf([] { SocketAddress::GetOctetsFromMachineName(""); });
        EXPECT_EQ(failure.code, fault.Code());
    }
}

// The interfaces' addresses might be of another IP version than the one that could not be told.
TEST_F(OwnNameFault, OfTheResolverIsNotAnUnknownName) {
    constexpr Fault faults[] = {
        {EMFILE, 10024, u"Too many open files"},
        {ENOMEM, 10055, u"No buffer space available"},
        {EIO, 11003, u"This is a nonrecoverable error"},
        {EAI_FAIL, 11003, u"This is a nonrecoverable error"},
    };
    for (const Fault& fault : faults) {
        const FailingCall fails(SystemCall::Getaddrinfo, fault.system);
        ExpectNotMade(fault);
    }
}

}  // namespace
}  // namespace Loopback
