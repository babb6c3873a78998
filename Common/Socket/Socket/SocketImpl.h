// Implements Socket for IPv4.
#pragma once

#include "Platform/Winsock.h"
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

    Winsock::Handle Handle() const noexcept final { return handle_; }

private:
    using AddressQuery = int (*)(Winsock::Handle handle, void* address, int* length);

    SocketAddress QueryAddress(AddressQuery query, const unsigned short* description) const;
    void SetOption(int option, unsigned int value, const unsigned short* label,
                   const unsigned short* description) const;

    // Out of line, so that successful transfers stay short.
    static int FailedSend();
    // Throws; the type is that of the call whose place it takes.
    static int FailedReceive(int result);

    void TraceConnection(LogFormat format) const noexcept;
    // Returns the count.
    int TraceTransfer(const TransferFormats& formats, const char* data, int count) const noexcept;

    Winsock::Handle handle_;
    SocketState state_;
    SocketAddress local_;
    SocketAddress remote_;
    // The value of both addresses after Close, which must not allocate and therefore needs it
    // ready.
    const SocketAddress nobody_;
};

}  // namespace VelNet
