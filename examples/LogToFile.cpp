// Lets a program's connections be read afterwards: all of the library's records go to a file.
//
//   LogToFile PATH
#include <VelCompanion/Errors.h>
#include <VelCompanion/Owners.h>
#include <VelCompanion/Transfers.h>
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketInitialization.h>

#include <cstdio>
#include <initializer_list>

namespace {

VelBase::ReturnPtrI<VelNet::Socket> Stream() {
    return VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
}

// A connection, five bytes, and its end.
void TalkToItself() {
    const VelNet::Octets localHost(127, 0, 0, 1);
    const auto listener = Stream();
    listener->Bind(localHost, 0);
    listener->Listen();
    const auto client = Stream();
    client->Connect(localHost, listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress address;
    const auto server = listener->Accept(address);
    VelCompanion::SendAll(*client, "hello");
    client->Close();
    char block[64];
    while (VelCompanion::ReceiveSome(*server, block, sizeof block) != 0) {
    }
}

}  // namespace

int main(int count, char** words) try {
    if (count != 2) {
        std::fputs("usage: LogToFile PATH\n", stderr);
        return 2;
    }
    VelLog::FileSink sink(words[1]);
    const VelCompanion::SinkInUse sinkInUse(sink);
    for (const char* const category :
         {VelLog::CATEGORY_ERROR, VelLog::CATEGORY_CONNECTION_TRACE, VelLog::CATEGORY_PACKET_TRACE,
          VelLog::CATEGORY_VERBOSE_PACKET_TRACE})
        VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, category, true);
    const VelNet::SocketInitialization socketLayer;
    TalkToItself();
} catch (...) {  // the file cannot be opened, for instance
    std::fprintf(stderr, "%s\n", VelCompanion::DescribeCurrentException().c_str());
    return 1;
}
