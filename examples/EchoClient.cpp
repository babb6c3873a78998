// Sends a text to an echo server and prints what comes back, by host and port as they are written.
//
//   EchoClient HOST PORT TEXT
#include <VelCompanion/Errors.h>
#include <VelCompanion/Transfers.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

// A block at a time: a server that waits for its answer to be read would not read any further.
std::string Exchange(VelNet::SocketXt& socket, std::string_view text) {
    constexpr std::size_t most = 4096;
    std::string answer;
    for (; !text.empty(); text.remove_prefix(std::min(text.size(), most))) {
        const std::string_view block = text.substr(0, most);
        VelCompanion::SendAll(socket, block);
        answer += VelCompanion::ReceiveExactly(socket, block.size(), std::chrono::seconds(10));
    }
    return answer;
}

}  // namespace

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: EchoClient HOST PORT TEXT\n", stderr);
        return 2;
    }
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(words[1], words[2]);
    std::puts(Exchange(*socket, words[3]).c_str());
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
