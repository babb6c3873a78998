// Multicast groups, in a network that ends on this machine.
#include <VelCompanion/Groups.h>
#include <loopback/ExtendedTest.h>
#include <support/Wine.h>

namespace Companion {
namespace {

using Loopback::XtPtr;

constexpr const char* Group = "239.1.2.3";

class Groups : public Loopback::LoopbackTest {
protected:
    void SetUp() override {
        if (!network_.IsUp()) {
            GTEST_SKIP() << "the system gives a test no network that ends on this machine";
        }
        const std::string lacking = Loopback::Lacking(Loopback::Ipv4);
        if (!lacking.empty()) GTEST_SKIP() << lacking;
    }

private:
    const Machine::OwnNetwork network_;
};

TEST_F(Groups, AreJoinedAndLeft) {
    const XtPtr member = Loopback::DatagramXt(Loopback::Ipv4);
    member->Bind(VelNet::SPECIAL_ANY, "0");
    const std::string port = Loopback::PortOf(*member);
    const XtPtr sender = Loopback::DatagramXt(Loopback::Ipv4);
    VelCompanion::JoinGroup(*member, Group);
    Loopback::SendTo(*sender, "to all", Group, port);
    EXPECT_EQ(Loopback::ReceiveFrom(*member).bytes, "to all");
    const int again = Loopback::FailureOf([&] { VelCompanion::JoinGroup(*member, Group); }).code;
    EXPECT_EQ(again, Support::RunsOnWine() ? VelNet::SOCKET_ERR_ADDRINUSE
                                           : VelNet::SOCKET_ERR_ADDRNOTAVAIL);
    VelCompanion::LeaveGroup(*member, Group);
    VelCompanion::JoinGroup(*member, Group);
}

TEST(GroupsInNumbers, AreTheModesOfTheLibrary) {
    EXPECT_EQ(VelCompanion::JOIN_GROUP, 0);
    EXPECT_EQ(VelCompanion::LEAVE_GROUP, 1);
}

}  // namespace
}  // namespace Companion
