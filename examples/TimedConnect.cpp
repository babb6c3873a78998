// Connects within a limit of time, and tells a silent host from one that refuses.
//
//   TimedConnect HOST PORT MILLISECONDS
#include <VelCompanion/Connecting.h>
#include <VelCompanion/Errors.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

int main(int count, char** words) try {
    if (count != 4) {
        std::fputs("usage: TimedConnect HOST PORT MILLISECONDS\n", stderr);
        return 2;
    }
    const std::chrono::milliseconds limit(std::atoi(words[3]));
    const VelNet::SocketInitialization socketLayer;
    const auto socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    VelCompanion::ConnectWithin(*socket, words[1], words[2], limit);
    std::puts("connected");
} catch (const VelNet::Exception& failure) {
    if (!VelCompanion::IsTimeout(failure)) {
        std::fprintf(stderr, "%s\n", VelCompanion::Describe(failure).c_str());
        return 1;
    }
    std::puts("no answer");
    return 3;
} catch (...) {
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
