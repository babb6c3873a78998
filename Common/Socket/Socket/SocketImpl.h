// Implements Socket for IPv4.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/ClassicEndpoints.h"
#include "Socket/LogFormat.h"
#include "Socket/OwnSocket.h"
#include "Socket/SocketState.h"
#include "Socket/TraceRecords.h"
#include "VelNet/Socket.h"
#include "VelSynch/ReferenceCountedImpl.h"

namespace VelNet {

// Wraps one system handle. Keeps both addresses as last reported by the system, for trace records
// only; GetLocalAddress and GetRemoteAddress ask the system each time.
class SocketImpl : public Socket, public VelSynch::ReferenceCountedImpl<int>, public OwnSocket {
public:
    SocketImpl();
    // Takes ownership of the handle.
    SocketImpl(Winsock::Handle handle, SocketState state);
    // Closes the socket if it is open.
    ~SocketImpl() override;
    SocketImpl(const SocketImpl&) = delete;
    SocketImpl& operator=(const SocketImpl&) = delete;

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
    void Close() noexcept override;
    int Receive(char* buffer, int length) override;
    int Send(const char* buffer, int length) override;
    bool IsDataAvailable() const override;
    SocketAddress GetLocalAddress() const override;
    SocketAddress GetRemoteAddress() const override;
    int GetStatus() const override;

private:
    // Ask the system.
    Winsock::AddressIpv4 QueryLocalAddress() const;
    Winsock::AddressIpv4 QueryRemoteAddress() const;
    // Store what GetLocalAddress and GetRemoteAddress return.
    void StoreLocalAddress(SocketAddress& target) const;
    void StoreRemoteAddress(SocketAddress& target) const;
    void SetOption(int option, unsigned int value, const unsigned short* label,
                   const unsigned short* description) const;

    // Out of line, so that successful transfers stay short.
    int FailedSend() const;
    // Throws; the type is that of the call whose place it takes.
    int FailedReceive(int result) const;

    // The endpoints as the trace records show them.
    ClassicEndpoints Endpoints() const;

    void TraceConnection(LogFormat format) const noexcept;
    // Returns the count.
    int TraceTransfer(const TransferFormats& formats, const char* data, int count) const noexcept;

    SocketState state_;
    SocketAddress local_;
    SocketAddress remote_;
};

}  // namespace VelNet
