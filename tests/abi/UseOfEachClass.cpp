// A client that uses each public class once. It is compiled with the warnings that clients may
// have.
#include <VelBase/ExceptionImpl.h>
#include <VelBase/TextConversions.h>
#include <VelLog/FileSink.h>
#include <VelLog/LogControl.h>
#include <VelLog/StandardErrorSink.h>
#include <VelNet/Address.h>
#include <VelNet/OctetsCollection.h>
#include <VelNet/SocketAddressCache.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>
#include <VelSynch/ReferenceCountedImpl.h>

#include <memory>
#include <string>
#include <utility>

namespace {

class Counted : public VelSynch::ReferenceCountedImpl<int> {};

class OwnSink : public VelLog::LogSink {
public:
    void Write(const VelLog::LogRecord& record) override { text_ = record.category; }

private:
    std::string text_;
};

struct DestroyCollection {
    void operator()(VelNet::SocketCollection* collection) const { collection->Destroy(); }
};

std::string TextOf(const VelBase::Message& message) {
    return VelBase::WideCharToUTF8(message.GetMessage(), false).c_str();
}

std::string NamesOf(const VelNet::Octets& octets) {
    VelBase::ReturnPtrI<VelNet::OctetsCollection> list = VelNet::CreateOctetsCollection();
    list->Add(octets);
    const VelNet::Address address(list->GetOctets(0), 80);
    VelBase::ReturnPtrI<VelNet::SocketAddressCache> cache = VelNet::CreateSocketAddressCache();
    return std::string(address.GetMachineName().c_str()) +
           cache->GetMachineNameFromOctets(octets).c_str();
}

int TransferExtended(const char* host) {
    const VelBase::ReturnPtrI<VelNet::SocketXt> socket =
        VelNet::CreateSocketXt(VelNet::Socket::SOCKET_DATAGRAM, VelNet::Socket::PROTOCOL_UDP);
    socket->Bind(VelNet::SPECIAL_LOOPBACK, "0");
    VelBase::ReturnString from;
    VelBase::ReturnString port;
    char buffer[8];
    socket->SendTo("text", 4, host, "7");
    return socket->RecvFrom(buffer, sizeof buffer, from, port);
}

unsigned int WaitFor(VelBase::ReturnPtrI<VelNet::Socket> socket) {
    const std::unique_ptr<VelNet::SocketCollection, DestroyCollection> collection(
        VelNet::CreateSocketCollection());
    collection->Add(socket.Get(), VelNet::EVENT_READ);
    const std::unique_ptr<VelNet::SocketCollection, DestroyCollection> ready(collection->Select(1));
    return ready ? ready->GetCount() : 0;
}

void Log(const char* path) {
    VelLog::StandardErrorSink standardError;
    VelLog::FileSink file(path);
    OwnSink own;
    for (VelLog::LogSink* const sink :
         {static_cast<VelLog::LogSink*>(&own), static_cast<VelLog::LogSink*>(&file),
          static_cast<VelLog::LogSink*>(&standardError)}) {
        VelLog::SetSink(sink);
    }
    VelLog::SetRouterEnabled(VelLog::ROUTER_NETWORK, VelLog::CATEGORY_ERROR, true);
}

}  // namespace

int main(int count, char** words) try {
    const VelNet::SocketInitialization layer;
    const VelBase::ReturnPtrI<Counted> counted(new Counted);
    Log(words[0]);
    const VelNet::SocketAddress address(VelNet::Octets(127, 0, 0, 1), 80);
    VelBase::ReturnPtrI<VelNet::Socket> socket =
        VelNet::CreateSocket(VelNet::Socket::SOCKET_STREAM, VelNet::Socket::PROTOCOL_TCP);
    socket->Connect(address.GetOctets(), address.GetPort());
    if (socket->Send(words[0], count) < count) return 1;
    return static_cast<int>(WaitFor(std::move(socket))) + TransferExtended("localhost") +
           static_cast<int>(NamesOf(address.GetOctets()).size());
} catch (const VelNet::Exception& failure) {
    return failure.GetErrorCode();
} catch (const VelBase::ExceptionImpl<VelBase::Message>& failure) {
    return static_cast<int>(TextOf(failure).size());
}
