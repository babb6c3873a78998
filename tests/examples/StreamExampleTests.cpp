// The examples with connections, each as a process of its own.
#include <VelNet/SocketError.h>
#include <examples/ExampleTest.h>
#include <loopback/Machine.h>

#include <vector>

namespace Examples {
namespace {

using VelNet::Socket;

class StreamExample : public ExampleTest {};

// Both have a fixed port, so they need a network of their own.
TEST_F(StreamExample, TheClientOfTheReadmeGetsItsGreetingBackFromTheServer) {
    const Machine::OwnNetwork network;
    if (!network.IsUp()) GTEST_SKIP() << "there is no network with this port free";
    Program server("server", {});
    std::string answer;
    do {  // the server does not say when it listens
        Program client("client", {});
        answer = client.ReadRest();
    } while (answer.find("Connection refused") != std::string::npos);
    EXPECT_EQ(answer, "hello\n");
    EXPECT_EQ(server.Wait(), 0);
}

TEST_F(StreamExample, TheEchoServerServesOneClientAfterTheOther) {
    Server server("echo-server", Socket::SOCKET_STREAM, {}, "listening");
    for (const std::string text : {"one", "two words"}) {
        Program client("echo-client", {LoopbackHost(), server.Port(), text});
        EXPECT_EQ(client.ReadRest(), text + '\n');
        EXPECT_EQ(client.Wait(), 0);
        const std::string told = server->ReadLine();
        EXPECT_EQ(told.find(LoopbackHost() + " port "), 0U) << told;
        EXPECT_EQ(told.substr(told.size() - 7), " closed");
    }
}

TEST_F(StreamExample, TheEchoClientSaysWhyItFails) {
    std::string port;
    { port = PortOf(*Listening()); }
    Program client("echo-client", {LoopbackHost(), port, "text"});
    EXPECT_NE(client.ReadRest().find("10061 (SOCKET_ERR_CONNREFUSED)"), std::string::npos);
    EXPECT_EQ(client.Wait(), 1);
}

TEST_F(StreamExample, AThreadForEachClientLetsTheSecondGoFirst) {
    Program server("thread-per-client", {"0", "2"});
    const std::string port = PortIn(server.ReadLine());
    const SocketPtr first = ConnectedTo(port);
    const SocketPtr second = ConnectedTo(port);
    SendAll(*second, "second");
    EXPECT_EQ(ReceiveExactly(*second, 6), "second");
    SendAll(*first, "first");
    EXPECT_EQ(ReceiveExactly(*first, 5), "first");
    first->Close();
    second->Close();
    EXPECT_EQ(server.ReadRest(), "closed\nclosed\n");
    EXPECT_EQ(server.Wait(), 0);
}

TEST_F(StreamExample, TheChatPassesALineOnToAllOthers) {
    Program server("chat-server", {"0"});
    const std::string port = PortIn(server.ReadLine());
    const SocketPtr ann = ConnectedTo(port);
    const SocketPtr ben = ConnectedTo(port);
    const SocketPtr cat = ConnectedTo(port);
    // Whoever has been heard is a member; the others get what is said from then on.
    SendAll(*cat, "Hel");
    SendAll(*cat, "lo!\nHow are ");
    EXPECT_EQ(ReceiveExactly(*ann, 7), "Hello!\n");
    EXPECT_EQ(ReceiveExactly(*ben, 7), "Hello!\n");
    ben->Close();
    SendAll(*cat, "you?\n");
    EXPECT_EQ(ReceiveExactly(*ann, 13), "How are you?\n");
    SendAll(*ann, "Fine.\n");
    EXPECT_EQ(ReceiveExactly(*cat, 6), "Fine.\n");
}

TEST_F(StreamExample, TheChatDismissesWhoNeverEndsALine) {
    Program server("chat-server", {"0"});
    const SocketPtr client = ConnectedTo(PortIn(server.ReadLine()));
    SendAll(*client, std::string(1001, 'x'));
    EXPECT_EQ(CodeOfReceive(*client), VelNet::SOCKET_ERR_UNKNOWN);
}

TEST_F(StreamExample, TheRelayShowsWhatItPassesOn) {
    const SocketPtr listener = Listening();
    Program relay("tracing-relay", {"0", "localhost", PortOf(*listener)});
    const SocketPtr client = ConnectedTo(PortIn(relay.ReadLine()));
    const SocketPtr server = AcceptedFrom(*listener);
    SendAll(*client, "question");
    EXPECT_EQ(ReceiveExactly(*server, 8), "question");
    SendAll(*server, "answer");
    EXPECT_EQ(ReceiveExactly(*client, 6), "answer");
    server->Close();
    EXPECT_EQ(CodeOfReceive(*client), VelNet::SOCKET_ERR_UNKNOWN);
    const std::string records = relay.ReadRest();
    for (const char* const part : {"Connected", "8 bytes", "6 bytes", "Disconnected"})
        EXPECT_NE(records.find(part), std::string::npos) << part << " is not in\n" << records;
    EXPECT_EQ(relay.Wait(), 0);
}

}  // namespace
}  // namespace Examples
