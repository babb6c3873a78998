// The examples that speak a protocol, with a server that says what it is told to.
#include <examples/ExampleTest.h>

namespace Examples {
namespace {

class ProtocolExample : public ExampleTest {
protected:
    // What the program prints when the server answers so, and its exit code at the end.
    std::string Redis(const std::string& answer) {
        Program client("redis-client", {LoopbackHost(), server_.Port(), "GET", "colour"});
        EXPECT_EQ(server_.Serve("colour\r\n", answer), "*2\r\n$3\r\nGET\r\n$6\r\ncolour\r\n");
        const std::string printed = client.ReadRest();
        return printed + std::to_string(client.Wait());
    }

    FakeServer server_;
};

TEST_F(ProtocolExample, TheHttpClientPrintsAllThatComesBeforeTheEnd) {
    Program client("http-client", {LoopbackHost(), server_.Port(), "/page"});
    EXPECT_EQ(server_.Serve("\r\n\r\n", "HTTP/1.0 200 OK\r\n\r\nHello!\r\n"),
              "GET /page HTTP/1.0\r\nHost: " + LoopbackHost() + "\r\n\r\n");
    EXPECT_EQ(client.ReadLine(), "HTTP/1.0 200 OK");
    EXPECT_EQ(client.ReadLine(), "");
    EXPECT_EQ(client.ReadLine(), "Hello!");
    EXPECT_EQ(client.ReadRest(), "");
    EXPECT_EQ(client.Wait(), 0);
}

TEST_F(ProtocolExample, TheRedisClientPrintsAnswersOfEachKind) {
    EXPECT_EQ(Redis("+PONG\r\n"), "PONG\n0");
    EXPECT_EQ(Redis("$5\r\ngreen\r\n"), "green\n0");
    EXPECT_EQ(Redis("$-1\r\n"), "(nil)\n0");
    EXPECT_EQ(Redis(":42\r\n"), "42\n0");
    EXPECT_EQ(Redis("-ERR unknown command\r\n"), "-ERR unknown command\n0");
    EXPECT_EQ(Redis("*2\r\n$1\r\na\r\n*1\r\n$2\r\nbc\r\n"), "a\nbc\n0");
}

TEST_F(ProtocolExample, TheRedisClientRefusesWhatIsNoAnswer) {
    const std::string refusal = "not an answer of a Redis server: ";
    EXPECT_EQ(Redis(std::string(5000, 'x')),
              refusal + "VelCompanion::ReceiveLine: a line is longer than 1024 bytes\n1");
    EXPECT_EQ(Redis("$999999999999\r\n"), refusal + "a text is too long\n1");
    EXPECT_EQ(Redis("\r\n"), refusal + "an empty line\n1");
    std::string nested;
    for (int depth = 0; depth < 100; ++depth)
        nested += "*1\r\n";
    EXPECT_EQ(Redis(nested), refusal + "lists are nested too deeply\n1");
    EXPECT_EQ(Redis("$5\r\ngre").back(), '1');
}

}  // namespace
}  // namespace Examples
