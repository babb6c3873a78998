// The example that connects within a limit, as a process of its own.
#include <examples/ExampleTest.h>

namespace Examples {
namespace {

class ConnectExample : public ExampleTest {
protected:
    // What it prints, and its exit code.
    static std::string Connect(const std::string& port, const std::string& milliseconds) {
        Program client("timed-connect", {LoopbackHost(), port, milliseconds});
        const std::string printed = client.ReadRest();
        return printed + std::to_string(client.Wait());
    }
};

TEST_F(ConnectExample, TellsWhatAnswersFromWhatRefuses) {
    std::string port;
    {
        const FakeServer server;
        port = server.Port();
        EXPECT_EQ(Connect(port, "60000"), "connected\n0");
    }
    const std::string refused = Connect(port, "60000");
    EXPECT_NE(refused.find("10061 (SOCKET_ERR_CONNREFUSED)"), std::string::npos) << refused;
    EXPECT_EQ(refused.back(), '1');
}

// The server's queue holds a few connections that it does not accept.
TEST_F(ConnectExample, WaitsNoLongerThanAskedForASilentServer) {
    const FakeServer server;
    std::string last = "connected\n0";
    for (int count = 0; count < 20 && last == "connected\n0"; ++count)
        last = Connect(server.Port(), "300");
    EXPECT_EQ(last, "no answer\n3");
}

}  // namespace
}  // namespace Examples
