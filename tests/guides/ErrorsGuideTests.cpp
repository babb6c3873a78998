// The code of docs/errors.md.
#include <VelBase/TextConversions.h>
#include <VelCompanion/Errors.h>
#include <VelNet/Exception.h>
#include <loopback/LoopbackTest.h>

#include <cstdio>

namespace {

// Returns how many bytes came, and 0 when the peer has ended the stream in good order.
int ReceiveUntilEnd(VelNet::Socket& socket, char* buffer, int length) try {
    return socket.Receive(buffer, length);
} catch (const VelNet::Exception& failure) {
    if (failure.GetErrorCode() != VelNet::SOCKET_ERR_UNKNOWN) throw;
    return 0;
}

class ErrorsGuide : public Loopback::LoopbackTest {
protected:
    // Nobody listens there.
    static unsigned short ClosedPort() { return Loopback::PortOf(*Loopback::Listening()); }
};

TEST_F(ErrorsGuide, TheEndOfAStreamIsNoFailure) {
    const Loopback::Connection connection = Loopback::Connected();
    Loopback::SendAll(*connection.server, "abc");
    connection.server->Close();
    char buffer[64];
    EXPECT_EQ(ReceiveUntilEnd(*connection.client, buffer, sizeof buffer), 3);
    EXPECT_EQ(ReceiveUntilEnd(*connection.client, buffer, sizeof buffer), 0);
}

void ConnectAndDescribe(unsigned short port) {
    try {
        Loopback::StreamSocket()->Connect(Loopback::LocalHost(), port);
    } catch (const VelNet::Exception& failure) {
        std::fprintf(stderr, "%s\n", VelCompanion::Describe(failure).c_str());
    }
}

void ConnectAndConvert(unsigned short port) {
    try {
        Loopback::StreamSocket()->Connect(Loopback::LocalHost(), port);
    } catch (const VelNet::Exception& failure) {
        const auto text = VelBase::WideCharToUTF8(failure.GetMessage(), false);
        std::fprintf(stderr, "%s (code %d)\n", text.c_str(), failure.GetErrorCode());
    }
}

// With the port that the guide has.
std::string Printed(void (*print)(unsigned short), unsigned short port) {
    testing::internal::CaptureStderr();
    print(port);
    std::string text = testing::internal::GetCapturedStderr();
    const std::string number = ":" + std::to_string(port) + ",";
    const std::size_t place = text.find(number);
    return place == std::string::npos ? text : text.replace(place, number.size(), ":4000,");
}

TEST_F(ErrorsGuide, AFailureIsShownWithDigitsOrWithAnOddCharacter) {
    const std::string start =
        "VelNet::SocketImpl::Connect() - FAIL. Cannot connect to a socket: 127.0.0.1:4000, ";
    const unsigned short port = ClosedPort();
    EXPECT_EQ(Printed(ConnectAndDescribe, port),
              start + "errno = 10061 (SOCKET_ERR_CONNREFUSED) Connection refused\n");
    EXPECT_EQ(Printed(ConnectAndConvert, port),
              start + "errno = \u274D Connection refused (code 10061)\n");
}

}  // namespace
