// What the extended socket sends and receives by host and port, and what follows its other
// transfers when they fail or are traced.
#include "Socket/SocketLayerState.h"
#include "Socket/SocketXtAddresses.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SocketXtTexts.h"
#include "Socket/WinsockScope.h"

#include <utility>

namespace VelNet {

namespace {

// The number of a failure that the system did not report.
constexpr int NoSystemError = -1;

}  // namespace

int SocketXtImpl::SendTo(const char* buffer, int length, SpecialAddressKind address,
                         const char* port) {
    return SocketXtImpl::SendTo(buffer, length, GetSpecialAddress(address, family_).c_str(), port);
}

int SocketXtImpl::SendTo(const char* buffer, int length, const char* host, const char* port) {
    constexpr SocketXtOperation operation = {"VelNet::SocketXtImpl::SendTo",
                                             "cannot sendto using connectionless socket"};
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
                            OrEmpty(host), OrEmpty(port)});
    }
    // Required (XtSendTo.RecordsShowNeitherTheSocketsTextsNorItsPeers): the local address is the
    // local host's name without a port, whatever the socket is bound to.
    TryWriteTransferRecords(SendtoFormats, buffer, sent, [&] {
        return TextEndpoints(NarrowComputerName().c_str(), "Random Port", OrEmpty(host),
                             OrEmpty(port));
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
                            error, NoHost, NoPort});
    }

    if (TellPeer(storage, socketType_ == Winsock::TypeDatagram ? Winsock::DatagramService : 0,
                 peer)) {
        host = peer.host.HandOver();
        port = peer.port.HandOver();
    } else {
        const int error = Winsock::WSAGetLastError();
        ReportSocketXtError(
            {function, "cannot get remote host and port", "::getnameinfo", error, NoHost, NoPort});
    }
    // Required (XtRecvFrom.SenderThatCannotBeToldIsRecordedAsTheTextsStand): written either way.
    TryWriteTransferRecords(RecvfromFormats, buffer, received, [&] {
        return TextEndpoints(localHost_, localPort_, host.c_str(), port.c_str());
    });
    return received;
}

int SocketXtImpl::TraceTransfer(const TransferFormats& formats, const char* data,
                                int count) const noexcept {
    return TryWriteTransferRecords(formats, data, count, [this] { return Endpoints(); });
}

int SocketXtImpl::FailedSend() const {
    const int error = Winsock::WSAGetLastError();
    if (error == Winsock::ErrorWouldBlock) return 0;
    ThrowSocketXtError({"VelNet::SocketXtImpl::Send", "send on socket failed", "::send", error,
                        JoinEndpoint(localHost_, localPort_).c_str(),
                        JoinEndpoint(remoteHost_, remotePort_).c_str()});
}

// Required (XtTransferReceive.NothingWaitingIsAFailure): unlike in Send, a call that would block is
// a failure like any other.
void SocketXtImpl::ThrowReceiveFailure(int result) const {
    constexpr const char* function = "VelNet::SocketXtImpl::Receive";
    if (result == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        // Required (XtTransferReceive.EachFailureIsReportedWithBothEndpoints): this spelling.
        ThrowSocketXtError({function, "recieve on socket failed", "::recv", error,
                            JoinEndpoint(localHost_, localPort_).c_str(),
                            JoinEndpoint(remoteHost_, remotePort_).c_str()});
    }
    // Required (XtTransferReceive.ClosedConnectionIsToldWithTheLocalTextsAlone): the local host
    // with a colon, then the local port, unlike above.
    ThrowSocketXtError({function,
                        "::recv could not be completed because the connection has been closed",
                        "::recv", NoSystemError, (localHost_ + ':').c_str(), localPort_.c_str()});
}

}  // namespace VelNet
