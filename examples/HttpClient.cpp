// Asks a web server for a page and prints the answer, headers included, until the server closes.
//
//   HttpClient HOST PORT PATH
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace {

// Until the end of the connection, or until nothing comes for a while.
void PrintAnswer(VelNet::SocketXt& socket) {
    constexpr std::chrono::seconds patience(30);
    char block[4096];
    while (const auto length = VelCompanion::ReceiveSome(socket, block, sizeof block, patience))
        std::fwrite(block, 1, length, stdout);
}

}  // namespace

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: HttpClient HOST PORT PATH\n", stderr);
        return 2;
    }
    const std::string host = words[1];
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(words[1], words[2]);
    VelCompanion::SendAll(
        *socket, std::string("GET ") + words[3] + " HTTP/1.0\r\nHost: " + host + "\r\n\r\n");
    PrintAnswer(*socket);
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
