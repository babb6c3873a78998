// What follows a transfer of either family that has failed or is traced.
#include "Platform/RarelyRead.h"
#include "Socket/ClassicEndpoints.h"
#include "Socket/FailureText.h"
#include "Socket/SocketImpl.h"
#include "Socket/SocketXtFailure.h"
#include "Socket/SocketXtImpl.h"
#include "Socket/SocketXtTexts.h"
#include "VelBase/WideLiteral.h"

namespace VelNet {

using VelBase::operator""_wide;

namespace {

// The number of a failure that the system did not report.
constexpr int NoSystemError = -1;

// Required (Receive.NothingToReceiveOnANonBlockingSocketThrows): unlike in Send, a call that would
// block is a failure like any other.
Exception ReceiveFailure(int result, const RarelyRead<const OwnSocket*>& socket) {
    constexpr const unsigned short* label = "VelNet::SocketImpl::Receive() - FAIL."_wide;
    if (result == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        return LoggedSystemFailure(label, "The ::recv failed"_wide, error, socket);
    }
    const VelBase::WideText text = BeginFailureText(
        label, "The ::recv could not be completed because the connection has been closed."_wide);
    return LoggedFailure(text, SOCKET_ERR_UNKNOWN, socket);
}

}  // namespace

int SocketImpl::FailedSend() const {
    const int error = Winsock::WSAGetLastError();
    if (error == Winsock::ErrorWouldBlock) return 0;
    throw LoggedSystemFailure("VelNet::SocketImpl::Send() - FAIL."_wide, "The ::send failed"_wide,
                              error, this);
}

int SocketImpl::FailedReceive(int result) const {
    // Not in a register, which unwinding would have to restore: that takes longer than reading it
    // where it is needed.
    const RarelyRead<const OwnSocket*> self = this;
    throw ReceiveFailure(result, self);
}

int SocketImpl::TraceTransfer(const TransferFormats& formats, const char* data,
                              int count) const noexcept {
    return TryWriteTransferRecords(formats, data, count, [this] { return Endpoints(); });
}

int SocketXtImpl::TraceTransfer(const TransferFormats& formats, const char* data,
                                int count) const noexcept {
    return TryWriteTransferRecords(formats, data, count, [this] { return Endpoints(*this); });
}

int SocketXtImpl::FailedSend() const {
    const int error = Winsock::WSAGetLastError();
    if (error == Winsock::ErrorWouldBlock) return 0;
    throw TransferFailure("VelNet::SocketXtImpl::Send", "send on socket failed", "::send", error);
}

int SocketXtImpl::FailedReceive(int result) const {
    throw ReceiveFailure(result);
}

// Required (XtTransferReceive.NothingWaitingIsAFailure): unlike in Send, a call that would block is
// a failure like any other.
Exception SocketXtImpl::ReceiveFailure(int result) const {
    constexpr const char* function = "VelNet::SocketXtImpl::Receive";
    if (result == Winsock::SocketError) {
        const int error = Winsock::WSAGetLastError();
        // Required (XtTransferReceive.EachFailureIsReportedWithBothEndpoints): this spelling.
        return TransferFailure(function, "recieve on socket failed", "::recv", error);
    }
    // Required (XtTransferReceive.ClosedConnectionIsToldWithTheLocalTextsAlone): the local host
    // with a colon, then the local port, unlike above.
    return LoggedSocketXtError(
        {function, "::recv could not be completed because the connection has been closed", "::recv",
         NoSystemError, (localHost_ + ':').c_str(), localPort_.c_str()},
        this);
}

Exception SocketXtImpl::TransferFailure(const char* function, const char* description,
                                        const char* call, int error) const {
    return LoggedSocketXtError(
        {function, description, call, error, JoinEndpoint(localHost_, localPort_).c_str(),
         JoinEndpoint(remoteHost_, remotePort_).c_str()},
        this);
}

}  // namespace VelNet
