// What the extended socket sends and receives by host and port.
#include "Socket/SocketLayerState.h"
#include "Socket/SocketXtAddresses.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SocketXtTexts.h"
#include "Socket/WinsockScope.h"

#include <utility>

namespace VelNet {

int SocketXtImpl::SendTo(const char* buffer, int length, SpecialAddressKind address,
                         const char* port) {
    return SocketXtImpl::SendTo(buffer, length, GetSpecialAddress(address, family_).c_str(), port);
}

int SocketXtImpl::SendTo(const char* buffer, int length, const char* host, const char* port) {
    const SocketXtOperation operation = {"VelNet::SocketXtImpl::SendTo",
                                         "cannot sendto using connectionless socket", this};
    const WinsockScope scope(operation.function);

    int sent = Winsock::SocketError;
    const AddressWalk walk =
        TryResolved(operation, host, port, Hints(), [&](const Winsock::AddressInfo& entry) {
            sent = Winsock::sendto(handle_, buffer, length, 0, entry.address, AddressLength(entry));
            return sent != Winsock::SocketError;
        });
    if (walk.outcome != AddressWalk::Accepted) {
        const int error = walk.ErrorOrLast();
        ThrowSocketXtError({operation.function, operation.description, "::sendto", error,
                            OrEmpty(host), OrEmpty(port)},
                           this);
    }
    // Required (XtSendTo.RecordsShowNeitherTheSocketsTextsNorItsPeers): the local address is the
    // local host's name without a port, whatever the socket is bound to.
    TryWriteTransferRecords(SendtoFormats, buffer, sent, [&] {
        return TextEndpoints(ConnectionNumber(), NarrowComputerName().c_str(), "Random Port",
                             OrEmpty(host), OrEmpty(port));
    });
    return sent;
}

int SocketXtImpl::RecvFrom(char* buffer, int length, VelBase::ReturnString& host,
                           VelBase::ReturnString& port) {
    constexpr const char* function = "VelNet::SocketXtImpl::RecvFrom";
    const WinsockScope scope(function);
    PeerTexts peer;
    Winsock::AddressStorage storage = {};
    int addressLength = sizeof storage;
    const int received = Winsock::recvfrom(handle_, buffer, length, 0, &storage, &addressLength);
    if (received == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        ThrowSocketXtError({function, "cannot recvfrom using connectionless socket", "::recvfrom",
                            error, NoHost, NoPort},
                           this);
    }

    if (TellPeer(storage, socketType_ == Winsock::TypeDatagram ? Winsock::DatagramService : 0,
                 peer)) {
        host = peer.HandOverHost();
        port = peer.HandOverPort();
    } else {
        const int error = Winsock::WSAGetLastError();
        ReportSocketXtError(
            {function, "cannot get remote host and port", "::getnameinfo", error, NoHost, NoPort},
            this);
    }
    // Required (XtRecvFrom.SenderThatCannotBeToldIsRecordedAsTheTextsStand): written either way.
    TryWriteTransferRecords(RecvfromFormats, buffer, received, [&] {
        return TextEndpoints(ConnectionNumber(), localHost_, localPort_, host.c_str(),
                             port.c_str());
    });
    return received;
}

}  // namespace VelNet
