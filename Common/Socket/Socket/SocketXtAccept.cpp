// The extended socket's way to accept connections.
#include "Socket/SocketXtFailure.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SocketXtTexts.h"
#include "Socket/WinsockScope.h"
#include "VelBase/InterfaceHolder.h"

namespace VelNet {

namespace {

// Required (XtAccept.EachFailureToTellThePeerIsLoggedAndTheSocketReturned): "host name", where
// RecvFrom says "host".
void ReportUnknownPeer(const char* function, int error, const OwnSocket* accepted) noexcept {
    ReportSocketXtError(
        {function, "cannot get remote host name and port", "::getnameinfo", error, NoHost, NoPort},
        accepted);
}

}  // namespace

VelBase::ReturnPtrI<SocketXt>& SocketXtImpl::Accept(VelBase::ReturnPtrI<SocketXt>& socket,
                                                    VelBase::ReturnString& host,
                                                    VelBase::ReturnString& port) {
    constexpr const char* function = "VelNet::SocketXtImpl::Accept";
    const WinsockScope scope(function);
    // All memory is allocated before the system is asked: a connection must not be lost because
    // memory runs out.
    //
    // Required (XtAccept.NewSocketIsConnectedLikeItsListenerAndKnowsNoTexts): the new socket has no
    // address strings.
    const VelBase::InterfaceHolder<SocketXtImpl> accepted(
        new SocketXtImpl(Winsock::InvalidSocket, STATE_CLOSED, socketType_, protocol_, family_));
    PeerTexts peer;
    MakeRoomForPeer();

    Winsock::AddressStorage storage = {};
    int length = sizeof storage;
    const Winsock::Handle handle = Winsock::accept(handle_, &storage, &length);
    if (handle == Winsock::InvalidSocket) {
        const int error = Winsock::WSAGetLastError();
        ThrowSocketXtError({function, "cannot accept on local socket from remote address",
                            "::accept", error, localHost_.c_str(), localPort_.c_str()},
                           this);
    }

    accepted->handle_ = handle;
    accepted->state_ = STATE_CONNECTED;
    // Required (XtAccept.PeersNumericTextsComeOutAndStayWithTheListener): the listener, not the new
    // socket, stores the peer's strings and writes the record.
    if (TellPeer(storage, 0, peer)) {
        RememberPeer(peer, host, port);
        if (IsConnectionTraceEnabled()) TraceConnection(ConnectedFormat, *accepted.Get());
    } else {
        ReportUnknownPeer(function, Winsock::WSAGetLastError(), accepted.Get());
    }
    socket = VelBase::ReturnPtrI<SocketXt>(accepted.Get());
    return socket;
}

void SocketXtImpl::MakeRoomForPeer() {
    remoteHost_.reserve(MAXHOST);
    remotePort_.reserve(MAXPORT);
}

void SocketXtImpl::RememberPeer(PeerTexts& peer, VelBase::ReturnString& host,
                                VelBase::ReturnString& port) {
    remoteHost_ = peer.Host();
    remotePort_ = peer.Port();
    host = peer.HandOverHost();
    port = peer.HandOverPort();
}

}  // namespace VelNet
