// The IPv4 socket behind Socket.
#pragma once

#include "Platform/Winsock.h"
#include "Socket/LogFormat.h"
#include "Socket/OwnSocket.h"
#include "Socket/SocketState.h"
#include "Socket/TraceRecords.h"
#include "VelNet/Socket.h"
#include "VelSynch/ReferenceCountedImpl.h"

namespace VelNet {

// Wraps one system handle. Remembers both addresses as they were last learnt, for the records; what
// GetLocalAddress and GetRemoteAddress answer is asked of the system each time.
class SocketImpl : public Socket, public VelSynch::ReferenceCountedImpl<int>, public OwnSocket {
public:
    SocketImpl();
    // Takes the handle over.
    SocketImpl(Winsock::Handle handle, SocketState state);
    // Closes a socket that is still open.
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

    // Out of the way of the transfers that succeed.
    static int FailedSend();
    [[noreturn]] static void ThrowReceiveFailure(int result);

    void TraceConnection(LogFormat format) const noexcept;
    void TraceTransfer(const TransferFormats& formats, const char* data, int count) const noexcept;

    Winsock::Handle handle_;
    SocketState state_;
    SocketAddress local_;
    SocketAddress remote_;
    // What both become in Close, which cannot fail and so must find it made.
    const SocketAddress nobody_;
};

}  // namespace VelNet
