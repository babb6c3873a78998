// Implementations of Socket and SocketXt that are not the library's.
#pragma once

#include <VelNet/SocketXt.h>
#include <VelSynch/ReferenceCountedImpl.h>

namespace Support {

// Answers the one question that its status hangs on, and knows itself.
template <class Interface>
class Foreign : public Interface, public VelSynch::ReferenceCountedImpl<int> {
public:
    using Interface::Accept;
    using Interface::Bind;
    using Interface::Connect;

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

using ForeignSocket = Foreign<VelNet::Socket>;

class ForeignSocketXt : public Foreign<VelNet::SocketXt> {
public:
    using Foreign::Accept;
    using Foreign::Bind;
    using Foreign::Connect;
    using OwnedText = VelBase::ReturnString;
    using Owned = VelBase::ReturnPtrI<VelNet::SocketXt>;

    void Bind(VelNet::SpecialAddressKind, const char*) override {}
    void Bind(const char*, const char*) override {}
    Owned& Accept(Owned& socket, OwnedText&, OwnedText&) override { return socket; }
    void Connect(VelNet::SpecialAddressKind, const char*) override {}
    void Connect(const char*, const char*) override {}
    ADDR_FAMILY GetAddressFamily() const override { return FAMILY_UNKNOWN; }
    void SetSocketForBroadcast() override {}
    void SetSocketForMulticast(VelNet::SpecialAddressKind, int) override {}
    void SetSocketForMulticast(const char*, int) override {}
    int SendTo(const char*, int, VelNet::SpecialAddressKind, const char*) override { return 0; }
    int SendTo(const char*, int, const char*, const char*) override { return 0; }
    int RecvFrom(char*, int, OwnedText&, OwnedText&) override { return 0; }
    VelNet::SOCKET_HANDLE GetHandle() const override { return 0; }
    OwnedText GetSpecialAddress(VelNet::SpecialAddressKind, ADDR_FAMILY) const override {
        return {};
    }
};

}  // namespace Support
