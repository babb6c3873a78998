// An implementation of Socket that is not the library's.
#pragma once

#include <VelNet/Socket.h>
#include <VelSynch/ReferenceCountedImpl.h>

namespace Support {

// Answers the one question that its status hangs on, and knows itself.
class ForeignSocket : public VelNet::Socket, public VelSynch::ReferenceCountedImpl<int> {
public:
    bool IsSameSocket(const VelNet::Socket& other) const override { return this == &other; }
    bool SetNonBlocking() override { return false; }
    bool IsValid() const override { return true; }
    void Bind(VelNet::Octets, unsigned short) override {}
    int Listen() override { return 0; }
    void Connect(VelNet::Octets, unsigned short) override {}
    VelBase::ReturnPtrI<VelNet::Socket> Accept(VelNet::SocketAddress&) override { return {}; }
    void SetReceiveTimeout(unsigned int) override {}
    void SetSendTimeout(unsigned int) override {}
    void SetReuseAddress() override {}
    void Close() override {}
    int Receive(char*, int) override { return 0; }
    int Send(const char*, int) override { return 0; }
    bool IsDataAvailable() const override {
        ++questions;
        return dataAvailable;
    }
    VelNet::SocketAddress GetLocalAddress() const override { return {}; }
    VelNet::SocketAddress GetRemoteAddress() const override { return {}; }
    int GetStatus() const override { return -1; }

    bool dataAvailable = false;
    mutable int questions = 0;
};

}  // namespace Support
