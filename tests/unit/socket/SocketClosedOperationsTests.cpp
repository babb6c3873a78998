#include "SocketFixture.h"

namespace SocketTests {
namespace {

class SocketClosedOperations : public SocketTest {};

// The operations of a closed socket, with the call that each makes.
struct ClosedOperation {
    const char* name;
    void (*run)(Socket&);
    const char* call;
    const char* line;
};

constexpr ClosedOperation ClosedOperations[] = {
    {"SetNonBlocking", [](Socket& socket) { EXPECT_FALSE(socket.SetNonBlocking()); }, "ioctlsocket",
     "ioctlsocket(INVALID, 0x8004667E, 1)"},
    {"Bind", [](Socket& socket) { socket.Bind(Octets(10, 1, 2, 3), 80); }, "bind",
     "bind(INVALID, 10.1.2.3:80, 16)"},
    {"Listen", [](Socket& socket) { socket.Listen(); }, "listen", "listen(INVALID, 2)"},
    {"Connect", [](Socket& socket) { socket.Connect(Octets(10, 1, 2, 3), 80); }, "connect",
     "connect(INVALID, 10.1.2.3:80, 16)"},
    {"Accept",
     [](Socket& socket) {
         SocketAddress remote;
         socket.Accept(remote);
     },
     "accept", "accept(INVALID, 16)"},
    {"SetReceiveTimeout", [](Socket& socket) { socket.SetReceiveTimeout(1); }, "setsockopt",
     "setsockopt(INVALID, 0xFFFF, 0x1006, 1, 4)"},
    {"SetSendTimeout", [](Socket& socket) { socket.SetSendTimeout(1); }, "setsockopt",
     "setsockopt(INVALID, 0xFFFF, 0x1005, 1, 4)"},
    {"SetReuseAddress", [](Socket& socket) { socket.SetReuseAddress(); }, "setsockopt",
     "setsockopt(INVALID, 0xFFFF, 0x4, 1, 4)"},
    {"Close", [](Socket& socket) { socket.Close(); }, "closesocket", "closesocket(INVALID)"},
    {"Receive",
     [](Socket& socket) {
         char buffer[8];
         socket.Receive(buffer, 8);
     },
     "recv", "recv(INVALID, 8, 0)"},
    {"Send", [](Socket& socket) { socket.Send("abc", 3); }, "send", "send(INVALID, \"abc\", 3, 0)"},
    {"IsDataAvailable", [](Socket& socket) { EXPECT_FALSE(socket.IsDataAvailable()); },
     "ioctlsocket", "ioctlsocket(INVALID, 0x4004667F)"},
    {"GetLocalAddress", [](Socket& socket) { socket.GetLocalAddress(); }, "getsockname",
     "getsockname(INVALID, 16)"},
    {"GetRemoteAddress", [](Socket& socket) { socket.GetRemoteAddress(); }, "getpeername",
     "getpeername(INVALID, 16)"},
};

TEST_F(SocketClosedOperations, LeavesEveryOperationToTheSystem) {
    for (const ClosedOperation& operation : ClosedOperations) {
        const auto socket = MakeConnectedSocket();
        socket->Close();
        ClearTranscript();
        PlainAnswers(operation.call).Fails(10038);
        Catch([&] { operation.run(*socket); });
        EXPECT_EQ(Transcript().front(), operation.line) << operation.name;
        EXPECT_EQ(CountOf(operation.call), 1) << operation.name;
        EXPECT_EQ(FieldsOf(*socket), ClosedFields()) << operation.name;
    }
}

TEST_F(SocketClosedOperations, LeavesEveryOperationOfTheNeverOpenToTheSystem) {
    for (const ClosedOperation& operation : ClosedOperations) {
        const auto socket = MakeClosedSocket();
        ClearTranscript();
        PlainAnswers(operation.call).Fails(10038);
        Catch([&] { operation.run(*socket); });
        EXPECT_EQ(Transcript().front(), operation.line) << operation.name;
        EXPECT_EQ(FieldsOf(*socket), ClosedFields()) << operation.name;
    }
}

}  // namespace
}  // namespace SocketTests
