// Implements SocketXt.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/LogFormat.h"
#include "Socket/OwnSocket.h"
#include "Socket/SocketState.h"
#include "Socket/SocketXtTexts.h"
#include "VelNet/Exception.h"
#include "VelNet/SocketXt.h"
#include "VelSynch/ReferenceCountedImpl.h"

#include <string>

namespace VelNet {

// Wraps one system handle. Keeps the strings that were passed for its addresses, for trace records
// and failure texts, but no addresses.
class SocketXtImpl : public SocketXt, public VelSynch::ReferenceCountedImpl<int>, public OwnSocket {
public:
    // Takes ownership of the handle.
    SocketXtImpl(Winsock::Handle handle, SocketState state, int socketType, int protocol,
                 ADDR_FAMILY family);
    // Closes the socket if it is open; a failure is logged and not thrown.
    ~SocketXtImpl() override;
    SocketXtImpl(const SocketXtImpl&) = delete;
    SocketXtImpl& operator=(const SocketXtImpl&) = delete;

    bool IsSameSocket(const Socket& other) const override;
    bool SetNonBlocking() override;
    bool IsValid() const override;
    void Bind(Octets address, unsigned short port) override;
    int Listen() override;
    void Connect(Octets address, unsigned short port) override;
    VelBase::ReturnPtrI<Socket> Accept(SocketAddress& remote) override;
    void SetReceiveTimeout(unsigned int milliseconds) override;
    void SetSendTimeout(unsigned int milliseconds) override;
    void SetReuseAddress() override;
    void Close() override;
    int Receive(char* buffer, int length) override;
    int Send(const char* buffer, int length) override;
    bool IsDataAvailable() const override;
    SocketAddress GetLocalAddress() const override;
    SocketAddress GetRemoteAddress() const override;
    int GetStatus() const override;

    void Bind(SpecialAddressKind address, const char* port) override;
    void Bind(const char* host, const char* port) override;
    VelBase::ReturnPtrI<SocketXt>& Accept(VelBase::ReturnPtrI<SocketXt>& socket,
                                          VelBase::ReturnString& host,
                                          VelBase::ReturnString& port) override;
    void Connect(SpecialAddressKind address, const char* port) override;
    void Connect(const char* host, const char* port) override;
    ADDR_FAMILY GetAddressFamily() const override;
    void SetSocketForBroadcast() override;
    void SetSocketForMulticast(SpecialAddressKind group, int mode) override;
    void SetSocketForMulticast(const char* group, int mode) override;
    int SendTo(const char* buffer, int length, SpecialAddressKind address,
               const char* port) override;
    int SendTo(const char* buffer, int length, const char* host, const char* port) override;
    int RecvFrom(char* buffer, int length, VelBase::ReturnString& host,
                 VelBase::ReturnString& port) override;
    SOCKET_HANDLE GetHandle() const override;
    VelBase::ReturnString GetSpecialAddress(SpecialAddressKind kind,
                                            ADDR_FAMILY family) const override;

private:
    void SetOption(int option, unsigned int value, const char* function,
                   const char* description) const;

    // The hints for addresses that the socket can use.
    Winsock::AddressInfo Hints() const noexcept;

    // Stores the peer's strings in this object, whose memory is reserved, and in the caller's
    // variables.
    void MakeRoomForPeer();
    void RememberPeer(PeerTexts& peer, VelBase::ReturnString& host, VelBase::ReturnString& port);

    // Out of line, so that successful transfers stay short.
    int FailedSend() const;
    // Throws; the type is that of the call whose place it takes.
    int FailedReceive(int result) const;

    // What these throw, logged.
    Exception ReceiveFailure(int result) const;
    Exception TransferFailure(const char* function, const char* description, const char* call,
                              int error) const;

    // The connection is one of this socket's, or one that it has accepted.
    void TraceConnection(LogFormat format, const OwnSocket& connection) const noexcept;
    // Returns the count.
    int TraceTransfer(const TransferFormats& formats, const char* data, int count) const noexcept;

    // The endpoints as the trace records show them.
    TextEndpoints Endpoints(const OwnSocket& connection) const;

    SocketState state_;
    std::string localHost_;
    std::string localPort_;
    std::string remoteHost_;
    std::string remotePort_;
    int socketType_;
    int protocol_;
    ADDR_FAMILY family_;
};

}  // namespace VelNet
