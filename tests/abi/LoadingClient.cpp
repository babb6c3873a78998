// The part of a program that uses the module, loaded and unloaded together with it.
#include <VelLog/LogControl.h>
#include <VelNet/Exception.h>
#include <VelNet/Socket.h>
#include <VelNet/SocketAddress.h>
#include <VelNet/SocketInitialization.h>

#include <cstring>
#include <initializer_list>

namespace {

class CountingSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord&) override { ++count_; }
    int Count() const { return count_; }

private:
    int count_ = 0;
};

VelNet::Octets Loopback() {
    return VelNet::SocketAddress::ConvertDottedStringToOctets("127.0.0.1");
}

bool Exchanges() {
    const auto listener =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    listener->Bind(Loopback(), 0);
    listener->Listen();
    const auto client =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    client->Connect(Loopback(), listener->GetLocalAddress().GetPort());
    VelNet::SocketAddress remote;
    const auto server = listener->Accept(remote);
    char received[6] = {};
    return client->Send("hello", 5) == 5 && server->Receive(received, 5) == 5 &&
           std::strcmp(received, "hello") == 0;
}

bool Resolves() {
    const auto addresses = VelNet::SocketAddress::GetOctetsFromMachineName("127.0.0.1");
    return addresses->GetCount() == 1;
}

bool Throws() {
    try {
        VelNet::SocketAddress::ConvertDottedStringToOctets("no address");
        return false;
    } catch (const VelNet::Exception&) {
        return true;
    }
}

}  // namespace

// Whether the module does its work: transfers, resolves, throws and logs.
extern "C" bool UseModule() {
    CountingSink sink;
    VelLog::SetSink(&sink);
    for (const char* category : {"Error", "Connection Trace", "Packet Trace"})
        VelLog::SetRouterEnabled("Network", category, true);
    bool works = false;
    {
        const VelNet::SocketInitialization layer;
        works = Exchanges() && Resolves() && Throws();
    }
    VelLog::SetSink(nullptr);
    return works && sink.Count() > 0;
}
