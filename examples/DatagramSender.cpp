// Sends a datagram and waits for the answer. Datagrams can be lost: what is not answered in time is
// sent again.
//
//   DatagramSender HOST PORT TEXT
#include <VelCompanion/Errors.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace {

constexpr int Attempts = 60;
constexpr unsigned int PatienceInMilliseconds = 500;

std::string ReceiveAnswer(VelNet::SocketXt& socket) {
    char block[1500];
    VelBase::ReturnString host;
    VelBase::ReturnString port;
    const int length = socket.RecvFrom(block, sizeof block, host, port);
    return {block, static_cast<std::size_t>(length)};
}

// Returns whether another attempt may help: nothing came in time, or nobody has the port yet. The
// latter is reported at once, so that there would be no time between the attempts.
bool WaitedFor(VelNet::SOCKET_ERR code) {
    if (code == VelNet::SOCKET_ERR_CONNRESET)
        std::this_thread::sleep_for(std::chrono::milliseconds(PatienceInMilliseconds));
    return code == VelNet::SOCKET_ERR_CONNRESET || code == VelNet::SOCKET_ERR_TIMEDOUT;
}

std::string Ask(VelNet::SocketXt& socket, const char* host, const char* port,
                const std::string& text) {
    for (int attempt = 1;; ++attempt) {
        socket.SendTo(text.data(), static_cast<int>(text.size()), host, port);
        try {
            return ReceiveAnswer(socket);
        } catch (const VelNet::Exception& failure) {
            if (attempt == Attempts || !WaitedFor(failure.GetErrorCode())) throw;
        }
    }
}

}  // namespace

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: DatagramSender HOST PORT TEXT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->SetReceiveTimeout(PatienceInMilliseconds);
    std::puts(Ask(*socket, words[1], words[2], words[3]).c_str());
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
