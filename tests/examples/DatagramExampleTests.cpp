// The examples with datagrams, each as a process of its own.
#include <examples/ExampleTest.h>
#include <loopback/Machine.h>

namespace Examples {
namespace {

using VelNet::Socket;

class DatagramExample : public ExampleTest {};

TEST_F(DatagramExample, TheReceiverAnswersTheSender) {
    Server receiver("datagram-receiver", Socket::SOCKET_DATAGRAM, {"1"}, "waiting");
    Program sender("datagram-sender", {LoopbackHost(), receiver.Port(), "five!"});
    EXPECT_EQ(sender.ReadRest(), "5 bytes\n");
    EXPECT_EQ(sender.Wait(), 0);
    EXPECT_EQ(receiver->ReadLine(), "five!");
}

TEST_F(DatagramExample, TheSenderSendsAgainUntilSomebodyAnswers) {
    const Machine::OwnNetwork network;  // where nobody else takes the port meanwhile
    std::string port;
    { port = Server("datagram-receiver", Socket::SOCKET_DATAGRAM, {"1"}, "waiting").Port(); }
    Program sender("datagram-sender", {LoopbackHost(), port, "late"});
    Program receiver("datagram-receiver", {port, "1"});
    EXPECT_EQ(receiver.ReadLine(), "waiting");
    EXPECT_EQ(receiver.ReadLine(), "late");
    EXPECT_EQ(sender.ReadRest(), "4 bytes\n");
}

class DatagramExampleGroup : public ExampleTest {
protected:
    // Of the IP version that extended sockets have here: IPv4 where the name can be set, since the
    // loopback interface carries no groups of IPv6.
    static std::string Group() {
        const auto socket = VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP);
        const bool isIpv6 = socket->GetAddressFamily() == VelNet::SocketXt::FAMILY_IPV6;
        return isIpv6 ? "ff15::7" : "239.1.2.3";
    }

    // Goes to every member on this machine and nowhere else.
    const Machine::OwnNetwork network_;

private:
    const Machine::Name name_{"127.0.0.1"};
};

TEST_F(DatagramExampleGroup, EveryListenerHearsTheAnnouncer) {
    if (!network_.IsUp()) GTEST_SKIP() << "there is no network that ends on this machine";
    const std::string group = Group();
    const std::string port = "7000";
    Program first("group-listener", {group, port, "1"});
    Program second("group-listener", {group, port, "1"});
    EXPECT_EQ(first.ReadLine(), "joined");
    EXPECT_EQ(second.ReadLine(), "joined");
    Program announcer("group-announcer", {group, port, "Good morning!"});
    EXPECT_EQ(announcer.ReadRest(), "");
    EXPECT_EQ(announcer.Wait(), 0);
    EXPECT_EQ(first.ReadRest(), "Good morning!\n");
    EXPECT_EQ(second.ReadRest(), "Good morning!\n");
    EXPECT_EQ(first.Wait(), 0);
}

}  // namespace
}  // namespace Examples
