// Holds one value of each kind for a debugger that stops in Look.
#include <VelBase/ExceptionImpl.h>
#include <VelBase/ReturnString.h>
#include <VelBase/ReturnWString.h>
#include <VelBase/TextConversions.h>
#include <VelNet/Address.h>
#include <VelNet/Exception.h>
#include <VelNet/SocketCollection.h>
#include <VelNet/SocketInitialization.h>
#include <VelNet/SocketXt.h>

#include <cstdio>

void Look(const void* value);

// Where the debugger stops.
void Look(const void* value) {
    std::printf("%d", value != nullptr ? 1 : 0);
}

namespace {

using VelNet::Socket;

VelNet::Exception Refused() {
    try {
        const auto listener = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
        listener->Bind(VelNet::Octets(127, 0, 0, 1), 0);
        const auto client = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
        client->Connect(VelNet::Octets(127, 0, 0, 1), listener->GetLocalAddress().GetPort());
    } catch (const VelNet::Exception& failure) {
        return failure;
    }
    return {nullptr, VelNet::SOCKET_ERR_UNKNOWN};
}

VelBase::Message NumberedMessage() {
    VelBase::Message message;
    message.SetDomainAndID(2, 7);
    message.SetMessage(VelBase::UTF8ToWideChar("a message", false).c_str());
    return message;
}

}  // namespace

int main() {
    const VelNet::SocketInitialization layer;
    const VelBase::ReturnString text("narrow");
    const VelBase::ReturnString noText;
    const VelBase::ReturnWString wideText(VelBase::UTF8ToWideChar("wide \u274D", false));
    const VelNet::Octets octets(192, 0, 2, 7);
    const VelNet::SocketAddress endpoint(octets, 4000);
    const VelNet::Address address(VelNet::Address::ANY, 80);
    const VelNet::Exception failure = Refused();
    const VelBase::Message message = NumberedMessage();
    const VelBase::ReturnPtrI<Socket> nobody;
    const auto socket = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    socket->Bind(VelNet::Octets(127, 0, 0, 1), 0);
    socket->Listen();
    const auto client = VelNet::CreateSocket(Socket::SOCKET_STREAM, Socket::PROTOCOL_TCP);
    client->Connect(VelNet::Octets(127, 0, 0, 1), socket->GetLocalAddress().GetPort());
    const auto extended = VelNet::CreateSocketXt(Socket::SOCKET_DATAGRAM, Socket::PROTOCOL_UDP,
                                                 VelNet::SocketXt::FAMILY_IPV4);
    extended->Bind("127.0.0.1", "0");
    VelBase::ReturnPtrI<VelNet::OctetsCollection> list(VelNet::CreateOctetsCollection());
    list->Add(octets);
    list->Add(VelNet::Octets(192, 0, 2, 8));
    VelNet::SocketCollection* const collection = VelNet::CreateSocketCollection();
    collection->Add(socket.Get(), VelNet::EVENT_ACCEPT);
    Look(&address);
    collection->Destroy();
}
